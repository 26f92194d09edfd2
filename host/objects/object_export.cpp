#include "host/objects/object_export.h"

#include <algorithm>
#include <span>
#include <system_error>
#include <utility>

#include "host/dataset/registry.h"
#include "host/dialogue/outcome.h"
#include "host/objects/file_meta.h"
#include "host/objects/new_file.h"
#include "host/objects/sha256.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 18;

std::string NameOf(std::string_view uid) {
  const auto entry = FindUid(uid);
  return entry ? std::string(entry->name) : "";
}

// Why the data set is not whole; empty when it is.
std::string Incomplete(const DialogueMessage& message,
                       const ExportedObject& object) {
  if (message.data_bytes == 0 && message.announces_data_set) {
    return "no byte of the data set was sent or captured";
  }
  if (!message.data_set_complete) {
    return "its last fragment was not sent or not captured";
  }
  if (!object.filled.empty()) {
    std::uint64_t lost = 0;
    for (const DataRange& range : object.filled) lost += range.length;
    return BytesText(lost) + " were not captured and are zero";
  }
  return "";
}

void FillInAssociation(const Dialogue& dialogue, const DialogueMessage& message,
                       ExportedObject& object) {
  if (message.association >= dialogue.associations.size()) return;
  const Association& association = dialogue.associations[message.association];
  if (!association.request) return;
  object.calling_ae_title =
      Utf8FromCodePage1252(association.request->calling_ae_title);
  object.called_ae_title =
      Utf8FromCodePage1252(association.request->called_ae_title);
}

// The AE title of the side that sent the message; empty when it is not known.
std::string SenderOf(const Dialogue& dialogue, const DialogueMessage& message) {
  if (message.association >= dialogue.associations.size()) return "";
  const Association& association = dialogue.associations[message.association];
  if (!association.request) return "";
  return association.RequestorDirection() == message.direction
             ? association.request->calling_ae_title
             : association.request->called_ae_title;
}

ExportedObject Describe(const Dialogue& dialogue,
                        const DialogueMessage& message) {
  const CommandSet command = dialogue.ReadCommand(message);
  ExportedObject object;
  object.command = CommandFieldText(message.command_field);
  object.first_frame = message.first_frame;
  object.last_frame = message.last_frame;
  object.first_time = message.first_time;
  object.last_time = message.last_time;
  object.sop_class = std::string(message.sop_class);
  object.sop_class_name = NameOf(object.sop_class);
  object.sop_instance = command.sop_instance;
  FillInAssociation(dialogue, message, object);
  if (message.last_answer) {
    const DialogueMessage& answer = dialogue.messages[*message.last_answer];
    if (answer.status) {
      object.status = StatusWithText(*answer.status, answer.command_field,
                                     answer.sop_class);
    }
  }
  return object;
}

void NameFrames(const FrameNames& names, ExportedObject& object) {
  object.first_file = names.FileOf(object.first_frame);
  object.last_file = names.FileOf(object.last_frame);
  object.first_frame = names.PlaceOf(object.first_frame).number;
  object.last_frame = names.PlaceOf(object.last_frame).number;
}

// Of identifiers, which have no UID, the frame that they begin in.
std::string NameOf(const ExportedObject& object) {
  if (!object.sop_instance.empty()) return SafeFileName(object.sop_instance);
  return SafeFileName(object.command + "-" +
                      std::to_string(object.connection + 1) + "-" +
                      std::to_string(object.first_frame));
}

}  // namespace

struct ObjectExport::Unfinished {
  Unfinished(ExportedObject&& its_object, MessageData&& its_data,
             const std::filesystem::path& folder)
      : object(std::move(its_object)),
        data(std::move(its_data)),
        file(folder) {}

  ExportedObject object;
  MessageData data;
  NewFile file;
  Sha256 hash;
};

ObjectExport::~ObjectExport() = default;

ObjectExport::ObjectExport(const std::filesystem::path& folder,
                           ExportChoice choice)
    : folder_(folder), choice_(choice), buffer_(kBufferBytes) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (std::filesystem::is_directory(folder, error)) return;
  throw Failure("The folder " + Utf8FromPath(folder) + " cannot be made (" +
                error.message() + "): name another folder.");
}

bool ObjectExport::IsExported(const DialogueMessage& message) const {
  if (!message.announces_data_set && message.data_bytes == 0) return false;
  return message.has_command_field && message.command_field == kCStoreRq
             ? choice_.objects
             : choice_.identifiers;
}

void ObjectExport::Add(const MessagePlace& place, const Dialogue& dialogue) {
  Begin(place, dialogue);
  Continue([] { return false; });
}

void ObjectExport::Begin(const MessagePlace& place, const Dialogue& dialogue) {
  const DialogueMessage& message = dialogue.messages[place.index];
  if (!IsExported(message)) return;
  ExportedObject object = Describe(dialogue, message);
  object.connection = place.connection;
  object.row = place.row;
  if (place.names != nullptr) NameFrames(*place.names, object);
  object.filled = LostRanges(dialogue, message);
  object.incomplete = Incomplete(message, object);
  if (message.data_bytes == 0) {
    objects_.push_back(std::move(object));
    return;
  }
  MessageData data(dialogue, message);
  object.transfer_syntax = data.TransferSyntax();
  object.transfer_syntax_name = NameOf(object.transfer_syntax);
  object.transfer_syntax_origin = data.OriginText();
  unfinished_ =
      std::make_unique<Unfinished>(std::move(object), std::move(data), folder_);
  unfinished_->file.Write(FileHead(
      {unfinished_->object.sop_class, unfinished_->object.sop_instance,
       unfinished_->object.transfer_syntax, SenderOf(dialogue, message)}));
}

bool ObjectExport::Continue(const std::function<bool()>& time_is_up) {
  if (!unfinished_) return true;
  ExportedObject& object = unfinished_->object;
  while (const std::size_t count =
             unfinished_->data.Sent().Read(object.bytes, std::span(buffer_))) {
    const auto bytes = std::span(buffer_).first(count);
    unfinished_->hash.Add(bytes);
    unfinished_->file.Write(bytes);
    object.bytes += count;
    if (time_is_up()) return false;
  }
  Finish();
  return true;
}

void ObjectExport::Finish() {
  const auto done = std::move(unfinished_);
  ExportedObject& object = done->object;
  object.sha256 = done->hash.Finish();
  object.file = names_.Keep(done->file, NameOf(object),
                            object.incomplete.empty() ? ".dcm" : ".partial");
  NoteSameContent(object);
  objects_.push_back(std::move(object));
}

void ObjectExport::NoteSameContent(ExportedObject& object) {
  if (object.file.empty()) return;
  const auto [first, is_new] = by_content_.try_emplace(
      object.sop_instance + ' ' + object.sha256, objects_.size());
  if (!is_new) object.same_content_as = objects_[first->second].file;
}

void ObjectExport::WriteText(std::string_view text,
                             std::string_view extension) {
  NewFile file(folder_);
  file.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  names_.Keep(file, "manifest", extension);
}

void ObjectExport::WriteManifest() {
  WriteText(ManifestCsv(objects_), ".csv");
  WriteText(ManifestJson(objects_), ".json");
}

std::string ObjectExport::Summary() const {
  const auto written = std::ranges::count_if(
      objects_, [](const ExportedObject& one) { return !one.file.empty(); });
  const auto incomplete = std::ranges::count_if(
      objects_,
      [](const ExportedObject& one) { return !one.incomplete.empty(); });
  std::string text = CountText(static_cast<std::uint64_t>(written),
                               "data set was", "data sets were") +
                     " saved to " + Utf8FromPath(folder_);
  if (incomplete > 0) {
    text += ", " + NumberText(static_cast<std::uint64_t>(incomplete)) +
            (incomplete == 1 ? " was" : " were") + " incomplete";
  }
  return text +
         "; manifest.csv tells about each. The files are for diagnosis, not "
         "for clinical use.";
}

}  // namespace host
