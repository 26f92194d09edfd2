#include "host/capdump/data_output.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "host/capdump/frame_json.h"
#include "host/dialogue/outcome.h"
#include "host/objects/data_set_dump.h"
#include "host/objects/dicom_json.h"
#include "host/objects/object_export.h"
#include "host/rows/row_trace.h"
#include "host/text/file_name.h"
#include "host/text/json_object.h"
#include "host/text/time_text.h"

namespace host {
namespace {

std::string NumberOrDash(std::optional<std::size_t> index) {
  return index ? std::to_string(*index + 1) : "-";
}

std::string Title(const FrameNames& names, std::size_t connection,
                  std::optional<std::size_t> row,
                  const DialogueMessage& message) {
  std::string title = "connection " + std::to_string(connection + 1) +
                      ", message " + NumberOrDash(row) + ": " +
                      CommandFieldText(message.command_field);
  if (!message.sop_class.empty()) title += " " + UidText(message.sop_class);
  return title + ", " + TimeOfDay(message.last_time) + ", frames " +
         names.Text(message.first_frame) + " to " +
         names.Text(message.last_frame) + "\n";
}

}  // namespace

DataOutput::DataOutput(const Options& options, Sink sink)
    : options_(options), sink_(std::move(sink)) {
  for (const std::string& text : options.elements) {
    auto path = ParseElementPath(text);
    if (!path) {
      throw UsageError(
          "The option --element wants a tag as 0010,0020 or "
          "0040,0275.0040,0007, not \"" +
          text + "\".");
    }
    elements_.push_back(*std::move(path));
  }
}

bool DataOutput::IsWanted(const Options& options) {
  return options.dump || options.dicom_json || !options.elements.empty();
}

void DataOutput::ForEachChosen(
    const std::vector<Connection>& connections,
    const std::function<void(const Chosen&)>& take) const {
  for (std::size_t i = 0; i < connections.size(); ++i) {
    const Dialogue* const dialogue = DialogueOf(connections[i]);
    if (dialogue == nullptr) continue;
    if (options_.connection && connections[i].index != *options_.connection) {
      continue;
    }
    const auto rows = ListedRows(connections[i].messages);
    for (std::size_t j = 0; j < dialogue->messages.size(); ++j) {
      const DialogueMessage& message = dialogue->messages[j];
      const auto row = message.record ? rows[*message.record] : std::nullopt;
      if (options_.row && row != *options_.row) continue;
      take({connections[i].index, row, j, *dialogue, message,
            connections[i].names()});
    }
  }
}

void DataOutput::Show(const std::vector<Connection>& connections) const {
  ForEachChosen(connections,
                [this](const Chosen& chosen) { ShowMessage(chosen); });
}

void DataOutput::ShowMessage(const Chosen& chosen) const {
  if (!elements_.empty()) ShowValues(chosen);
  if (options_.dicom_json) ShowJson(chosen);
  if (!options_.dump) return;
  sink_(Title(chosen.names, chosen.connection, chosen.row, chosen.message));
  const auto text = [&chosen](std::uint32_t first, std::uint32_t last) {
    return chosen.names.Text(first, last);
  };
  DumpMessage(chosen.dialogue, chosen.message, sink_,
              options_.frames ? FrameText(text) : FrameText());
}

// Tabs between the columns, so that a spreadsheet and cut take them.
void DataOutput::ShowValues(const Chosen& chosen) const {
  const auto values = FindValues(chosen.dialogue, chosen.message, elements_);
  const auto is_empty = [](const std::string& text) { return text.empty(); };
  if (std::ranges::all_of(values, is_empty)) return;
  std::string line = std::to_string(chosen.connection + 1) + "\t" +
                     NumberOrDash(chosen.row) + "\t" +
                     TimeOfDay(chosen.message.last_time) + "\t" +
                     CommandFieldText(chosen.message.command_field);
  for (const std::string& value : values) line += "\t" + value;
  sink_(line + "\n");
}

void DataOutput::ShowJson(const Chosen& chosen) const {
  const DialogueMessage& message = chosen.message;
  JsonObject object;
  object.Text("kind", "dicom_message");
  object.Number("connection", chosen.connection + 1);
  if (chosen.row) object.Number("row", *chosen.row + 1);
  object.Text("command_field", CommandFieldText(message.command_field));
  object.Text("time", UtcTime(message.last_time, 9));
  AddFrames(chosen.names, message.first_frame, message.last_frame, object);
  sink_(std::move(object).Open() + ",");
  const auto text = [&chosen](std::uint32_t first, std::uint32_t last) {
    JsonObject frames;
    AddFrames(chosen.names, first, last, frames);
    return std::move(frames).Open().substr(1);
  };
  DicomJson(sink_, options_.most_inline.value_or(0),
            options_.frames ? FrameText(text) : FrameText())
      .Write(chosen.dialogue, message);
  sink_("}\n");
}

void DataOutput::Export(const std::vector<Connection>& connections) const {
  ObjectExport files(
      PathFromUtf8(options_.export_folder),
      {.objects = true, .identifiers = options_.export_identifiers});
  ForEachChosen(connections, [&files](const Chosen& chosen) {
    files.Add({chosen.connection, chosen.row, chosen.index, &chosen.names},
              chosen.dialogue);
  });
  files.WriteManifest();
  sink_(files.Summary() + "\n");
}

}  // namespace host
