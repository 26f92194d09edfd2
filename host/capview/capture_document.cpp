#include "host/capview/capture_document.h"

#include <algorithm>
#include <utility>

#include "host/streams/dimse_status.h"

namespace host {
namespace {

// More would take too long to be put in order at one go.
constexpr unsigned kMostLooksPerSlice = 256;

constexpr std::uint32_t kNoImages[DICOM_IMAGE_TABLE_ENTRIES] = {};

std::size_t IndexOf(ListKind view) {
  return view == ListKind::kMessages ? 1 : 0;
}

}  // namespace

// One connection shown to the module.
struct CaptureDocument::Session {
  Session(Module& module, const Connection& connection)
      : window(*connection.feed),
        list(module, window, true),
        generation(module.Generation()),
        wire{WireIndex(connection.pdus), WireIndex(connection.messages)} {
    list.Begin();
  }

  HostWindow window;
  PacketList list;
  unsigned generation;
  std::array<WireIndex, 2> wire;
  std::array<std::uint32_t, 2> shown{};
  std::array<std::uint32_t, 2> available{};
  bool listed = false;  // `packets` packets, said to be `live`
  std::uint32_t packets = 0;
  bool live = true;
};

CaptureDocument::CaptureDocument(std::wstring module_path)
    : module_path_(std::move(module_path)) {}

CaptureDocument::~CaptureDocument() = default;

void CaptureDocument::LoadModule() {
  if (!module_) module_ = std::make_unique<Module>(module_path_);
}

void CaptureDocument::Open(const std::filesystem::path& path,
                           HandOver hand_over, bool follow) {
  auto loader = std::make_unique<CaptureLoader>(
      path, LoadOptions{.hand_over = hand_over, .follow = follow});
  LoadModule();
  sessions_.clear();
  titles_.clear();
  chosen_.reset();
  looked_for_dicom_ = 0;
  path_ = path;
  loader_ = std::move(loader);
  look_again_ = true;
}

bool CaptureDocument::Work(const TimeIsUp& time_is_up) {
  if (!IsOpen()) return false;
  if (loader_->state() == CaptureLoader::State::kReading || look_again_) {
    look_again_ = false;
    unsigned looks = 0;
    loader_->Read([&] { return ++looks > kMostLooksPerSlice || time_is_up(); });
    ChooseFirstDicom();
  }
  if (Session* session = Current()) {
    if (NeedsListing(*session)) ListSome(time_is_up);
    if (NeedsListing(*session)) return true;
  }
  return loader_->state() == CaptureLoader::State::kReading;
}

void CaptureDocument::LookAgain() {
  look_again_ =
      IsOpen() && loader_->state() == CaptureLoader::State::kFollowing;
}

void CaptureDocument::Stop() {
  if (IsOpen()) loader_->End();
}

unsigned CaptureDocument::Percent() const {
  const Session* session = Current();
  if (loader_->state() == CaptureLoader::State::kReading ||
      session == nullptr) {
    return loader_->percent();
  }
  const std::uint64_t packets = std::max(session->window.PacketCount(), 1U);
  return static_cast<unsigned>(std::uint64_t{session->window.Position()} * 100 /
                               packets);
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
  const Session* left = Current();
  if (left != nullptr && NeedsListing(*left)) module_->Reload();
  chosen_ = index;
  auto& session = sessions_[index];
  if (!session) {
    session = std::make_unique<Session>(*module_, ConnectionAt(index));
  }
}

void CaptureDocument::Refresh() {
  Session* session = Current();
  if (session == nullptr) return;
  module_->RefreshDecode(session->window.Handle());
  // Whatever went wrong in the old one is forgotten; its rows stay in sight.
  auto fresh = std::make_unique<Session>(*module_, ConnectionAt(*chosen_));
  fresh->shown = session->shown;
  sessions_[*chosen_] = std::move(fresh);
}

bool CaptureDocument::HasModuleFailed() const {
  const Session* session = Current();
  return session != nullptr && !session->list.Notes().empty();
}

CaptureDocument::Session* CaptureDocument::Current() const {
  return chosen_ ? sessions_.at(*chosen_).get() : nullptr;
}

bool CaptureDocument::NeedsListing(const Session& session) const {
  return !session.listed || session.generation != module_->Generation() ||
         session.packets != session.window.PacketCount() ||
         session.live != (ConnectionAt(*chosen_).live ||
                          loader_->state() != CaptureLoader::State::kDone);
}

void CaptureDocument::ListSome(const TimeIsUp& time_is_up) {
  Session& session = *Current();
  if (session.generation != module_->Generation()) session.list.Begin();
  session.live = ConnectionAt(*chosen_).live ||
                 loader_->state() != CaptureLoader::State::kDone;
  session.packets = session.window.PacketCount();
  session.list.SetLive(session.live);
  session.listed = true;
  session.list.Resume([&](unsigned) {
    session.listed = !time_is_up();
    return session.listed;
  });
  session.packets = std::min(session.packets, session.window.PacketCount());
  session.generation = module_->Generation();
  ReadCounts(session);
}

void CaptureDocument::ReadCounts(Session& session) {
  for (const ListKind view : {ListKind::kPdus, ListKind::kMessages}) {
    const std::size_t i = IndexOf(view);
    session.available[i] = session.list.Count(view);
    session.shown[i] = session.listed
                           ? session.available[i]
                           : std::max(session.shown[i], session.available[i]);
  }
}

std::uint32_t CaptureDocument::Count(ListKind view) const {
  const Session* session = Current();
  return session == nullptr ? 0 : session->shown[IndexOf(view)];
}

std::uint32_t CaptureDocument::Available(ListKind view) const {
  const Session* session = Current();
  if (session == nullptr || session->generation != module_->Generation()) {
    return 0;
  }
  return session->available[IndexOf(view)];
}

bool CaptureDocument::IsListed() const {
  const Session* session = Current();
  return session == nullptr || !NeedsListing(*session);
}

std::vector<ListedRow> CaptureDocument::Page(ListKind view,
                                             std::uint32_t first) {
  if (first >= Available(view)) return {};
  return Current()->list.Page(view, first);
}

WireIndex* CaptureDocument::Wire(ListKind view) {
  Session* session = Current();
  return session == nullptr ? nullptr : &session->wire[IndexOf(view)];
}

std::vector<std::string> CaptureDocument::Notes() const {
  std::vector<std::string> notes;
  if (IsOpen()) notes = loader_->Notes();
  if (const Session* session = Current()) {
    const auto& wire = ConnectionAt(*chosen_).notes;
    const auto& list = session->list.Notes();
    notes.insert(notes.end(), wire.begin(), wire.end());
    notes.insert(notes.end(), list.begin(), list.end());
  }
  return notes;
}

CaptureDocument::Failures CaptureDocument::FailedMessages(
    std::size_t connection) const {
  Failures failures;
  std::uint32_t position = 0;
  for (const WireRecord& message : ConnectionAt(connection).messages) {
    if (!message.listed) continue;
    const bool failed =
        message.status && KindOfStatus(*message.status) == StatusKind::kFailure;
    if (failed && failures.count++ == 0) failures.first = position;
    ++position;
  }
  return failures;
}

std::string CaptureDocument::Display(ListKind view, std::uint32_t index,
                                     HWND tree, HWND hex,
                                     const Switches& switches) {
  HostWindow& window = Current()->window;
  window.State().SetShowMessageData(switches.show_message_data);
  window.State().SetSectionExpandMask(switches.expand_mask);
  const auto failure =
      module_->Display(window.Handle(), tree, static_cast<std::int32_t>(index),
                       kNoImages, hex, view == ListKind::kMessages);
  return RecoverFrom(failure ? failure->text : std::string());
}

std::string CaptureDocument::Save(ListKind view, std::uint32_t index,
                                  HFILE file) {
  return RecoverFrom(hidden_.Save(*module_, Current()->window, view,
                                  static_cast<std::int32_t>(index), file));
}

std::string CaptureDocument::Print(ListKind view, std::uint32_t index,
                                   const Paper& paper) {
  HostWindow& window = Current()->window;
  window.State().SetPrinter(paper.printer, paper.line_height,
                            paper.lines_per_page, 1);
  return RecoverFrom(
      hidden_.Print(*module_, window, view, static_cast<std::int32_t>(index)));
}

// After a failure the module takes no further display; loaded again it knows
// nothing, and Work() lists the connection anew.
std::string CaptureDocument::RecoverFrom(std::string failure) {
  if (!failure.empty()) module_->Reload();
  return failure;
}

void CaptureDocument::Clear(HWND tree, HWND hex) {
  if (module_) module_->ClearDisplay(tree, hex);
}

}  // namespace host
