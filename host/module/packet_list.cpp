#include "host/module/packet_list.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "host/text/number_text.h"
#include "host/text/text_encoding.h"

namespace host {
namespace {

// The module answers a failure by starting the capture again, and only every
// third one by a message box after which it goes on. A capture with two such
// places would be read for ever.
constexpr unsigned kMostFailures = 9;
// Calls in a row in which the module took nothing new.
constexpr unsigned kMostIdleCalls = 3;
constexpr unsigned kMostRetreats = 8;

// Preset of an output that every successful call writes 0 to.
constexpr std::uint32_t kUntouched = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kEmptyList = std::numeric_limits<std::uint32_t>::max();

std::string FieldText(const char* field, std::size_t size) {
  const void* end = std::memchr(field, '\0', size);
  return {field, end ? static_cast<const char*>(end) : field + size};
}

ListedRow RowFrom(const PacketListRow& row) {
  return {row.number, row.direction, row.length,
          FieldText(row.summary, sizeof row.summary),
          FieldText(row.detail, sizeof row.detail)};
}

}  // namespace

PacketList::PacketList(Module& module, HostWindow& window, bool live)
    : module_(module), window_(window), live_(live) {
  module_.RegisterParent(window_.Handle());
  BeginAnew();
}

PacketList::~PacketList() { module_.DeRegisterParent(window_.Handle()); }

void PacketList::BeginAnew() {
  window_.StartReading();
  failures_ = idle_calls_ = 0;
  first_failure_ = kUntouched;
}

void PacketList::SetLive(bool live) { live_ = live || ends_early_; }

void PacketList::Read(const Progress& progress) {
  if (window_.PacketCount() == 0 || ReadOn(progress)) return;
  for (unsigned retreats = 0; retreats < kMostRetreats; ++retreats) {
    EndBeforeFailure(progress);
    if (failures_ == 0) return;
  }
}

bool PacketList::ReadOn(const Progress& progress) {
  while (true) {
    const std::uint32_t taken = window_.PacketsTaken();
    const std::uint64_t fetched = window_.PacketsFetchedAgain();
    const Outcome outcome = ReadSome();
    if (GivesUp(outcome)) return false;
    if (IsFinished(outcome, taken, fetched)) return true;
    if (progress && !progress(percent_)) return true;
  }
}

PacketList::Outcome PacketList::ReadSome() {
  Module::ListRequest request;  // no rows: reading and listing are two things
  return Call(request);
}

PacketList::Outcome PacketList::Call(Module::ListRequest& request) {
  request.live = live_;
  request.first_available = kUntouched;
  const auto crash = module_.PacketList(window_.Handle(), request);
  for (const MessageBoxText& box : module_.TakeMessageBoxes()) {
    failure_text_ = PrintableFromCodePage1252(box.text);
    AddNote("The module showed a message box: \"" + failure_text_ + "\".");
  }
  if (crash) {
    failure_text_ = PrintableFromCodePage1252(crash->text);
    module_.Reload();
    return Outcome::kCrashed;
  }
  percent_ = request.answer >> 16;
  if (request.first_available == kUntouched) return Outcome::kFailed;
  const bool more = (request.answer & 0xFFFF) == DICOM_LIST_CALL_AGAIN;
  return more ? Outcome::kMore : Outcome::kUpToDate;
}

bool PacketList::GivesUp(Outcome outcome) {
  if (outcome != Outcome::kFailed && outcome != Outcome::kCrashed) return false;
  first_failure_ = std::min(first_failure_, window_.NextPacket());
  ++failures_;
  return outcome == Outcome::kCrashed || failures_ >= kMostFailures;
}

// A live call always says "up to date": the list is complete when the module
// has taken the last packet and a further call fetches nothing. A call that is
// not live says itself when it has come to the end.
bool PacketList::IsFinished(Outcome outcome, std::uint32_t taken_before,
                            std::uint64_t fetched_before) {
  if (outcome == Outcome::kFailed) return false;
  if (!live_ && outcome == Outcome::kUpToDate) return true;
  const bool fetched = window_.PacketsFetchedAgain() != fetched_before;
  const bool took = window_.PacketsTaken() != taken_before;
  if (fetched || took) {
    idle_calls_ = 0;
    return false;
  }
  if (window_.PacketsTaken() >= window_.PacketCount()) return true;
  return ++idle_calls_ >= kMostIdleCalls;
}

// Shows the module only the packets before the one at which it failed first.
// Live, since the closing of a finished capture would process what it has held
// back, the failing segment included.
void PacketList::EndBeforeFailure(const Progress& progress) {
  const std::uint32_t packets = window_.PacketCount();
  const std::uint32_t end =
      std::min(packets, first_failure_) - (first_failure_ > 0 ? 1 : 0);
  AddNote("The module cannot go on at packet " + NumberText(end + 1) + " of " +
          NumberText(packets) +
          (failure_text_.empty() ? "" : " (" + failure_text_ + ")") +
          ": the lists end before it.");
  module_.RefreshDecode(window_.Handle());
  window_.LimitPackets(end);
  window_.StartReading();
  live_ = ends_early_ = true;
  failures_ = idle_calls_ = 0;
  if (end > 0) ReadOn(progress);
}

std::uint32_t PacketList::Count(ListKind list) {
  if (window_.PacketCount() == 0) return 0;
  Module::ListRequest request;
  request.list = list;
  request.last_available = kEmptyList;
  Call(request);
  return request.last_available + 1;
}

std::vector<ListedRow> PacketList::Page(ListKind list, std::uint32_t first) {
  if (window_.PacketCount() == 0) return {};
  std::array<PacketListRow, DICOM_ROWS_PER_CALL> rows{};
  Module::ListRequest request;
  request.list = list;
  request.rows = rows.data();
  request.first_index = static_cast<std::int32_t>(first);
  request.row_count = static_cast<std::uint32_t>(rows.size());
  Call(request);
  // A position behind the end comes back as the last one, a failure or an empty
  // list without rows.
  if (request.first_available == kUntouched ||
      request.first_index != static_cast<std::int32_t>(first)) {
    return {};
  }
  const auto count =
      std::min<std::size_t>({request.row_count, rows.size(),
                             std::size_t{request.last_available} + 1 - first});
  std::vector<ListedRow> page;
  std::transform(rows.begin(), rows.begin() + count, std::back_inserter(page),
                 RowFrom);
  return page;
}

void PacketList::AddNote(const std::string& note) {
  if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) {
    notes_.push_back(note);
  }
}

}  // namespace host
