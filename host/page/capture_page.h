#ifndef HOST_PAGE_CAPTURE_PAGE_H_
#define HOST_PAGE_CAPTURE_PAGE_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/findings/finding.h"
#include "host/findings/scene.h"

namespace host {

// What a page tells about.
struct PageSubject {
  std::string capture;  // its file's name, UTF-8; its folder is not told
  const Scene& scene;
  const std::vector<Finding>& findings;  // worst first
  std::function<bool(const SceneConnection&)> is_wanted;
  bool with_data = false;  // and the values that messages carry
};

// What is wrong in a capture and what happened in it, as one HTML page for
// whoever has to mend it: it holds all that it shows and asks for nothing from
// elsewhere, runs nothing, and, unless they are asked for, holds no value of a
// data set and no SOP instance UID. It is well-formed XML, is printed on A4
// without cut edges, and says where it leaves out what is too much. Linear in
// the capture; the page's length is bounded, and it is handed on in pieces.
void WriteCapturePage(const PageSubject& subject,
                      const std::function<void(std::string_view)>& sink);

}  // namespace host

#endif  // HOST_PAGE_CAPTURE_PAGE_H_
