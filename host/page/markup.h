#ifndef HOST_PAGE_MARKUP_H_
#define HOST_PAGE_MARKUP_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Texts of a capture are whatever its peers sent: each goes through here on its
// way to a page. What comes out is well-formed for HTML and XML alike.

// UTF-8 as the content of an element or of a quoted attribute. Characters that
// mean something to a parser are escaped; those that no page may hold, that
// would turn the direction of what follows, or that are no UTF-8 become the
// replacement character.
std::string Markup(std::string_view utf8);

// The first `most` characters; what is longer ends in an ellipsis.
std::string Shortened(std::string_view utf8, std::size_t most);

// "<p>...</p>": the text as the whole content of an element. `tag` and
// `style_class`, which may be empty, are the program's own.
std::string Element(std::string_view tag, std::string_view style_class,
                    std::string_view utf8);

// A drawing inside of a page, in units of its own. Coordinates are whole, since
// they are shown the same on every system.
class Drawing {
 public:
  // `title` says what is seen, to those who do not see it.
  Drawing(int width, int height, std::string_view title);

  struct Point {
    int x = 0;
    int y = 0;
  };
  // The style classes are the page's.
  void Line(Point from, Point to, std::string_view style_class);
  void Arrow(Point from, Point to, std::string_view style_class);
  void Box(Point corner, int width, int height, std::string_view style_class);
  void Text(Point at, std::string_view style_class, std::string_view utf8);

  std::string Close() &&;

 private:
  std::string text_;
};

}  // namespace host

#endif  // HOST_PAGE_MARKUP_H_
