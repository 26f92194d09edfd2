#include "host/objects/manifest.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/text/json_object.h"

namespace host {
namespace {

// Whether the capture consists of several files, so that frames need theirs.
bool HasFiles(const std::vector<ExportedObject>& objects) {
  return std::ranges::any_of(objects, [](const ExportedObject& object) {
    return !object.first_file.empty();
  });
}

// Calls `add` with each column's name and value, and whether it is a number.
template <class Add>
void ForEachColumn(const ExportedObject& object, bool has_files,
                   const Add& add) {
  const auto text = [&](const char* name, const std::string& value) {
    add(name, value, false);
  };
  const auto number = [&](const char* name, std::uint64_t value) {
    add(name, std::to_string(value), true);
  };
  text("file", object.file);
  text("complete", object.incomplete.empty() ? "yes" : "no");
  text("incomplete_because", object.incomplete);
  number("connection", object.connection + 1);
  if (object.row) {
    number("row", *object.row + 1);
  } else {
    text("row", "");
  }
  text("command", object.command);
  number("first_frame", object.first_frame);
  number("last_frame", object.last_frame);
  if (has_files) {
    text("first_file", object.first_file);
    text("last_file", object.last_file);
  }
  text("first_time", UtcTime(object.first_time, 9));
  text("last_time", UtcTime(object.last_time, 9));
  text("calling_ae_title", object.calling_ae_title);
  text("called_ae_title", object.called_ae_title);
  text("sop_class", object.sop_class);
  text("sop_class_name", object.sop_class_name);
  text("sop_instance", object.sop_instance);
  text("transfer_syntax", object.transfer_syntax);
  text("transfer_syntax_name", object.transfer_syntax_name);
  text("transfer_syntax_origin", object.transfer_syntax_origin);
  number("bytes", object.bytes);
  text("sha256", object.sha256);
  text("status", object.status);
  text("same_content_as", object.same_content_as);
}

// The values of one line with their commas.
class CsvLine {
 public:
  void Add(std::string_view value) {
    if (!std::exchange(is_empty_, false)) text_ += ',';
    if (value.find_first_of(",\"\r\n") == value.npos) {
      text_ += value;
      return;
    }
    text_ += '"';
    for (const char character : value) {
      text_.append(character == '"' ? 2 : 1, character);
    }
    text_ += '"';
  }
  std::string End() && { return std::move(text_ += "\r\n"); }

 private:
  std::string text_;
  bool is_empty_ = true;
};

// "120+4 3072+1448": offset and length of each.
std::string RangesText(const std::vector<DataRange>& ranges) {
  std::string text;
  for (const DataRange& range : ranges) {
    if (!text.empty()) text += ' ';
    text += std::to_string(range.offset) + "+" + std::to_string(range.length);
  }
  return text;
}

std::string RangesJson(const std::vector<DataRange>& ranges) {
  std::string json = "[";
  for (const DataRange& range : ranges) {
    if (json.size() > 1) json += ',';
    json += "{\"offset\":" + std::to_string(range.offset) +
            ",\"length\":" + std::to_string(range.length) + "}";
  }
  return json + "]";
}

}  // namespace

std::string ManifestCsv(const std::vector<ExportedObject>& objects) {
  const bool has_files = HasFiles(objects);
  CsvLine names;
  ForEachColumn({}, has_files, [&](const char* name, const std::string&, bool) {
    names.Add(name);
  });
  names.Add("filled_ranges");
  std::string csv = std::move(names).End();
  for (const ExportedObject& object : objects) {
    CsvLine line;
    ForEachColumn(
        object, has_files,
        [&](const char*, const std::string& value, bool) { line.Add(value); });
    line.Add(RangesText(object.filled));
    csv += std::move(line).End();
  }
  return csv;
}

std::string ManifestJson(const std::vector<ExportedObject>& objects) {
  const bool has_files = HasFiles(objects);
  std::string json = "[";
  for (const ExportedObject& object : objects) {
    JsonObject row;
    ForEachColumn(
        object, has_files,
        [&](const char* name, const std::string& value, bool is_number) {
          if (is_number) {
            row.Value(name, value);
          } else {
            row.Text(name, value);
          }
        });
    row.Value("filled_ranges", RangesJson(object.filled));
    json += (json.size() > 1 ? ",\n " : "\n ") + std::move(row).Close();
  }
  return json + "\n]\n";
}

}  // namespace host
