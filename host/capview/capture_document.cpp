#include "host/capview/capture_document.h"

#include <algorithm>
#include <utility>

#include "host/capture/capture_names.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/streams/dimse_status.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/number_text.h"

namespace host {
namespace {

// More would take too long to be put in order at one go.
constexpr unsigned kMostLooksPerSlice = 256;

}  // namespace

CaptureDocument::CaptureDocument(std::filesystem::path module_path)
    : module_path_(std::move(module_path)) {}

void CaptureDocument::LoadModule() {
  if (!module_) module_ = std::make_unique<Module>(module_path_);
}

void CaptureDocument::Open(const CaptureNames& names, HandOver hand_over,
                           bool follow) {
  CaptureInputs inputs = FindCaptures(names);
  if (inputs.files.empty()) throw CaptureError(inputs.failures.front());
  if (follow && inputs.files.size() > 1) {
    throw Failure(
        "Only a capture of one file can be followed: open the newest file "
        "alone.");
  }
  auto loader = std::make_unique<CaptureLoader>(
      inputs.files, LoadOptions{.hand_over = hand_over,
                                .follow = follow,
                                .at_rest = !follow,
                                .observe = ReadDialogues()});
  LoadModule();
  sessions_.clear();
  titles_.clear();
  chosen_.reset();
  clean_streams_ = hand_over == HandOver::kCleanStreams;
  findings_ = {};
  ++findings_version_;
  timing_.reset();
  names_ = names;
  first_file_ = Utf8FromPath(inputs.files.front().path.filename());
  unfound_ = std::move(inputs.failures);
  loader_ = std::move(loader);
  look_again_ = true;
}

std::string CaptureDocument::Title() const {
  const FrameNames& names = loader_->names();
  if (!names.HasSeveralFiles()) return first_file_;
  return names.file(0) + " and " +
         CountText(names.size() - 1, "more file", "more files");
}

bool CaptureDocument::Work(const TimeIsUp& time_is_up) {
  if (!IsOpen()) return false;
  if (loader_->state() == CaptureLoader::State::kReading || look_again_) {
    look_again_ = false;
    unsigned looks = 0;
    loader_->Read([&] { return ++looks > kMostLooksPerSlice || time_is_up(); });
    ChooseFirstDicom();
  }
  if (clean_streams_ && findings_.Look(*loader_)) ++findings_version_;
  if (ModuleSession* session = Current()) {
    if (!IsListed()) ListSome(*session, time_is_up);
    if (!IsListed()) return true;
  }
  if (loader_->state() == CaptureLoader::State::kReading) return true;
  TimeTheChosen();
  return false;
}

void CaptureDocument::LookAgain() {
  look_again_ =
      IsOpen() && loader_->state() == CaptureLoader::State::kFollowing;
}

void CaptureDocument::Stop() {
  if (IsOpen()) loader_->End();
}

unsigned CaptureDocument::Percent() const {
  const ModuleSession* session = Current();
  const bool reading = loader_->state() == CaptureLoader::State::kReading;
  return reading || session == nullptr ? loader_->percent()
                                       : session->Percent();
}

void CaptureDocument::TimeTheChosen() {
  if (timing_ || !chosen_ || IsGrowing()) return;
  timing_ = std::make_shared<const ConnectionTiming>(
      TimeConnection(ConnectionAt(*chosen_)));
}

// The first connection with DICOM is shown as soon as it is found.
void CaptureDocument::ChooseFirstDicom() {
  if (chosen_) return;
  const bool complete = loader_->state() != CaptureLoader::State::kReading;
  for (std::size_t i = 0; i < ConnectionCount() && !chosen_; ++i) {
    if (ConnectionAt(i).carries_dicom) Choose(i);
  }
  if (!chosen_ && complete && ConnectionCount() > 0) Choose(0);
}

std::size_t CaptureDocument::ConnectionCount() const {
  return IsOpen() ? loader_->connections().size() : 0;
}

const Connection& CaptureDocument::ConnectionAt(std::size_t index) const {
  return loader_->connections().at(index);
}

std::optional<AeTitles> CaptureDocument::TitlesOf(std::size_t index) const {
  if (const auto known = titles_.find(index); known != titles_.end()) {
    return known->second;
  }
  const Connection& connection = ConnectionAt(index);
  if (!connection.carries_dicom) return {};
  const auto titles = FindAeTitles(*connection.feed);
  if (titles) titles_[index] = *titles;
  return titles;
}

// All windows of the module share some of its state: a list that is left half
// read would disturb the next one, so the module begins anew.
void CaptureDocument::Choose(std::size_t index) {
  if (chosen_ == index) return;
  if (!IsListed()) module_->Reload();
  chosen_ = index;
  timing_.reset();
  auto& session = sessions_[index];
  if (!session) {
    session =
        std::make_unique<ModuleSession>(*module_, hidden_, ConnectionAt(index));
  }
}

void CaptureDocument::Refresh() {
  if (ModuleSession* session = Current()) session->Refresh();
}

bool CaptureDocument::HasModuleFailed() const {
  const ModuleSession* session = Current();
  return session != nullptr && !session->Notes().empty();
}

ModuleSession* CaptureDocument::Current() const {
  return chosen_ ? sessions_.at(*chosen_).get() : nullptr;
}

bool CaptureDocument::IsGrowing() const {
  return loader_->state() != CaptureLoader::State::kDone;
}

bool CaptureDocument::IsListed() const {
  const ModuleSession* session = Current();
  return session == nullptr || session->IsListed(IsGrowing());
}

void CaptureDocument::ListSome(ModuleSession& session,
                               const TimeIsUp& time_is_up) {
  session.ReadLists(IsGrowing(), [&](unsigned) { return !time_is_up(); });
  session.TraceNewRows();
}

std::uint32_t CaptureDocument::Count(ListKind list) const {
  const ModuleSession* session = Current();
  return session == nullptr ? 0 : session->Count(list);
}

std::uint32_t CaptureDocument::Available(ListKind list) const {
  const ModuleSession* session = Current();
  return session == nullptr ? 0 : session->Available(list);
}

std::vector<ListedRow> CaptureDocument::Page(ListKind list,
                                             std::uint32_t first) {
  ModuleSession* session = Current();
  if (session == nullptr) return {};
  return session->Page(list, first);
}

const RowTrace* CaptureDocument::Trace(ListKind list) const {
  const ModuleSession* session = Current();
  return session == nullptr ? nullptr : &session->Trace(list);
}

std::vector<std::string> CaptureDocument::Notes() const {
  std::vector<std::string> notes = unfound_;
  if (IsOpen()) {
    for (std::string& note : loader_->Notes()) notes.push_back(std::move(note));
  }
  if (const ModuleSession* session = Current()) {
    const auto& wire = ConnectionAt(*chosen_).notes;
    const auto& list = session->Notes();
    notes.insert(notes.end(), wire.begin(), wire.end());
    notes.insert(notes.end(), list.begin(), list.end());
  }
  return notes;
}

std::optional<CaptureDocument::DialoguePart> CaptureDocument::RecordOf(
    RowRef row) const {
  const RowTrace* trace = Trace(row.list);
  if (trace == nullptr) return {};
  const Dialogue* const dialogue = DialogueOf(ConnectionAt(*chosen_));
  const auto record = trace->RecordIndexOf(row.index);
  if (dialogue == nullptr || !record) return {};
  return DialoguePart{dialogue, static_cast<std::uint32_t>(*record)};
}

std::optional<CaptureDocument::DialoguePart> CaptureDocument::MessageOf(
    RowRef row) const {
  const auto record = RecordOf(row);
  if (!record) return {};
  const auto is_it = [&](const DialogueMessage& message) {
    if (row.list == ListKind::kMessages) {
      return message.record == record->index;
    }
    return std::ranges::find(message.pieces, record->index, &PdvPiece::pdu) !=
           message.pieces.end();
  };
  const auto& messages = record->dialogue->messages;
  const auto found = std::ranges::find_if(messages, is_it);
  if (found == messages.end()) return {};
  return DialoguePart{record->dialogue,
                      static_cast<std::uint32_t>(found - messages.begin())};
}

std::optional<CaptureDocument::DialoguePart> CaptureDocument::AssociationOf(
    RowRef row) const {
  auto part = row.list == ListKind::kPdus ? RecordOf(row) : MessageOf(row);
  if (!part) return {};
  const auto association =
      row.list == ListKind::kPdus
          ? part->dialogue->AssociationOfPdu(part->index)
          : part->dialogue->messages[part->index].association;
  if (!association || *association >= part->dialogue->associations.size()) {
    return {};
  }
  return DialoguePart{part->dialogue, *association};
}

Acceptances CaptureDocument::AllAcceptances() const {
  Acceptances all;
  for (std::size_t i = 0; i < ConnectionCount(); ++i) {
    const Dialogue* const dialogue = DialogueOf(ConnectionAt(i));
    if (dialogue != nullptr) all.Add(i, *dialogue);
  }
  return all;
}

CaptureDocument::Failures CaptureDocument::FailedMessages(
    std::size_t connection) const {
  const auto& messages = ConnectionAt(connection).messages;
  std::optional<std::size_t> first;
  Failures failures;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const WireRecord& message = messages[i];
    if (!message.listed || !message.status) continue;
    if (KindOfStatus(*message.status) != StatusKind::kFailure) continue;
    if (!first) first = i;
    ++failures.count;
  }
  if (first && connection == chosen_) {
    failures.first = Trace(ListKind::kMessages)->RowOfRecord(*first);
  }
  return failures;
}

std::string CaptureDocument::Display(RowRef row, const DecodeWindows& windows,
                                     const Switches& switches) {
  ModuleSession& session = *Current();
  session.State().SetShowMessageData(switches.show_message_data);
  session.State().SetSectionExpandMask(switches.expand_mask);
  return session.Display(row, windows).value_or("");
}

std::string CaptureDocument::Save(RowRef row, std::int32_t file) {
  return Current()->Save(row, file).value_or("");
}

std::string CaptureDocument::Print(RowRef row, const Paper& paper) {
  return Current()->Print(row, paper).value_or("");
}

void CaptureDocument::Clear(const DecodeWindows& windows) {
  if (module_) module_->ClearDisplay(windows);
}

}  // namespace host
