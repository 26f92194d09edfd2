#include "host/capture/capture_series.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "host/text/file_name.h"
#include "host/text/number_text.h"

namespace host {
namespace {

constexpr std::size_t kMostSentences = 20;

// The sentences, of many the first ones and how many more there are.
void Append(const std::vector<std::string>& sentences,
            std::vector<std::string>& to) {
  const std::size_t count = std::min(sentences.size(), kMostSentences);
  to.insert(to.end(), sentences.begin(),
            sentences.begin() + static_cast<std::ptrdiff_t>(count));
  if (count == sentences.size()) return;
  to.push_back("The same goes for " +
               CountText(sentences.size() - count, "more file", "more files") +
               ".");
}

}  // namespace

CaptureSeries::CaptureSeries(const std::vector<CaptureInput>& inputs,
                             ByteStore& store,
                             std::optional<std::uint64_t> most_temporary)
    : store_(store),
      room_(MakeTemporaryRoom(most_temporary)),
      is_one_(inputs.size() == 1) {
  if (is_one_) {
    Begin(std::make_unique<CaptureFile>(inputs.front().path, room_), 0);
    return;
  }
  FindSources(inputs);
  NameFiles();
}

void CaptureSeries::FindSources(const std::vector<CaptureInput>& inputs) {
  for (const CaptureInput& input : inputs) {
    try {
      Probe(input);
    } catch (const NoCaptureError& failure) {
      if (input.in_folder) {
        skipped_.push_back(failure.skipped());
      } else {
        failures_.push_back(failure.what());
      }
    } catch (const CaptureError& failure) {
      failures_.push_back(failure.what());
    }
  }
  if (sources_.empty()) {
    std::vector<std::string> sentences = Notes();
    Append(failures_, sentences);
    std::string text = "There is no capture that can be read: name others.";
    for (const std::string& sentence : sentences) text += "\n" + sentence;
    throw CaptureError(text);
  }
  std::ranges::stable_sort(sources_, {}, &Source::first_time);
}

void CaptureSeries::Probe(const CaptureInput& input) {
  auto file = std::make_unique<CaptureFile>(input.path, room_);
  if (sources_.empty()) link_type_ = file->link_type();
  Source source{input, std::numeric_limits<Nanoseconds>::max(), nullptr};
  if (file->Next()) source.first_time = file->record().time;
  std::error_code failed;
  const bool again = std::filesystem::is_regular_file(input.path, failed);
  if (!again) source.file = std::move(file);
  sources_.push_back(std::move(source));
}

// Where two are called alike in their folders, the folder tells them apart.
void CaptureSeries::NameFiles() {
  std::map<std::filesystem::path, int> alike;
  for (const Source& source : sources_) {
    ++alike[source.input.path.filename()];
  }
  for (const Source& source : sources_) {
    const auto& path = source.input.path;
    const bool is_clear = alike[path.filename()] == 1;
    names_->AddFile(Utf8FromPath(is_clear ? path.filename() : path));
  }
}

CaptureSeries::Open& CaptureSeries::Begin(std::unique_ptr<CaptureFile> file,
                                          std::uint32_t index) {
  const ByteStore::Offset begin = store_.AddFile(file->bytes());
  return current_.emplace(Open{std::move(file), begin, index, 0});
}

bool CaptureSeries::IsLater(const Open& one, const Open& other) {
  return std::pair(one.clock, one.index) > std::pair(other.clock, other.index);
}

bool CaptureSeries::Next() {
  do {
    if (is_one_ ? !current_->file->Next() : !Choose()) return false;
    if (frames_ == std::numeric_limits<std::uint32_t>::max()) {
      throw CaptureError(
          "There are more than 4,294,967,295 frames: give fewer files at a "
          "time.");
    }
    ++frames_;
  } while (!is_one_ && NoteFrame());
  return true;
}

bool CaptureSeries::NoteFrame() {
  const CaptureFile& file = *current_->file;
  if (names_->HasSeveralFiles()) {
    names_->Note(frames_, {current_->index, file.frames()});
  }
  if (others_.empty() && file.record().time > twins_until_) return false;
  const bool is_twin = twins_.IsTwin(file.record(), current_->index);
  twin_count_ += is_twin;
  return is_twin;
}

bool CaptureSeries::Choose() {
  if (current_) Settle(current_->file->Next());
  while (true) {
    if (!others_.empty() &&
        (!current_ || IsLater(*current_, others_.front()))) {
      std::ranges::pop_heap(others_, IsLater);
      std::optional<Open> earliest = std::move(others_.back());
      others_.pop_back();
      SetAside();
      current_ = std::move(earliest);
    }
    const bool is_next =
        next_ < sources_.size() &&
        (!current_ || current_->clock >= sources_[next_].first_time);
    if (!is_next) return current_.has_value();
    SetAside();
    OpenNext();
  }
}

void CaptureSeries::SetAside() {
  if (!current_) return;
  others_.push_back(*std::exchange(current_, {}));
  std::ranges::push_heap(others_, IsLater);
}

void CaptureSeries::OpenNext() {
  const auto index = static_cast<std::uint32_t>(next_);
  Source& source = sources_[next_++];
  try {
    const bool has_frame = source.file != nullptr;
    auto file = has_frame
                    ? std::move(source.file)
                    : std::make_unique<CaptureFile>(source.input.path, room_);
    Open& open = Begin(std::move(file), index);
    Settle(has_frame ? open.file->frames() != 0 : open.file->Next());
  } catch (const CaptureError& failure) {  // it was there a moment ago
    failures_.push_back(failure.what());
  }
}

void CaptureSeries::Settle(bool has_frame) {
  const CaptureFile& file = *current_->file;
  if (has_frame) {
    current_->clock = std::max(current_->clock, file.record().time);
    return;
  }
  if (!file.damage().empty()) failures_.push_back(DamageOf(*current_));
  twins_until_ = std::max(twins_until_, current_->clock);
  file.bytes()->Rest();
  current_.reset();
}

std::string CaptureSeries::DamageOf(const Open& open) const {
  const std::string name =
      names_->HasSeveralFiles() ? " " + names_->file(open.index) : "";
  const std::string frame = std::to_string(open.file->frames());
  const std::string& limit = open.file->bytes()->limit();
  if (!limit.empty()) {
    return "The capture file" + name + " is shown up to frame " + frame + ", " +
           limit;
  }
  return "The capture file" + name + " is damaged or breaks off after frame " +
         frame + " (" + open.file->damage() + "); what comes before is shown.";
}

ByteStore::Offset CaptureSeries::stored() const {
  return current_->begin + record().offset;
}

int CaptureSeries::link_type() const {
  return is_one_ ? current_->file->link_type() : link_type_;
}

unsigned CaptureSeries::percent() const {
  if (is_one_) return current_->file->percent();
  std::size_t done = 100 * (next_ - others_.size());
  if (current_) done += current_->file->percent() - 100;
  for (const Open& open : others_) done += open.file->percent();
  return static_cast<unsigned>(done / sources_.size());
}

std::vector<std::string> CaptureSeries::Failures() const {
  std::vector<std::string> sentences;
  if (is_one_ && !current_->file->damage().empty()) {
    sentences.push_back(DamageOf(*current_));
  }
  Append(failures_, sentences);
  return sentences;
}

std::vector<std::string> CaptureSeries::Notes() const {
  std::vector<std::string> sentences;
  Append(skipped_, sentences);
  if (twin_count_ != 0) {
    sentences.push_back(CountText(twin_count_,
                                  "frame that two files both hold was",
                                  "frames that two files both hold were") +
                        " taken once.");
  }
  return sentences;
}

bool CaptureSeries::EndsInsideFrame() const {
  return is_one_ && current_->file->EndsInsideFrame();
}

}  // namespace host
