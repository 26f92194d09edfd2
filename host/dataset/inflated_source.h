#ifndef HOST_DATASET_INFLATED_SOURCE_H_
#define HOST_DATASET_INFLATED_SOURCE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/dataset/byte_source.h"

namespace host {

// The data set inside a deflated one: a stream without header (RFC 1951). Reads
// it in constant memory. Reading on costs what is read; going back by more than
// a piece begins anew.
class InflatedSource final : public ByteSource {
 public:
  // What a stream may grow to: this and so many times its own size. No real
  // data set comes near; a bomb ends there.
  static constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 28;
  static constexpr std::uint64_t kMostGrowth = 100;

  // `deflated` has to outlive this. Inflates it once, to know its size.
  explicit InflatedSource(ByteSource& deflated);
  ~InflatedSource() override;

  std::uint64_t size() const override { return size_; }
  std::size_t Read(std::uint64_t offset, std::span<std::uint8_t> to) override;

  // What kept it from reading the stream to its end, as "the deflated stream is
  // damaged at byte 1,234": what comes before it is read. Empty when all is
  // well.
  const std::string& problem() const { return problem_; }

 private:
  struct Stream;

  void Begin();
  bool NextPiece();
  bool FillInput();
  void NoteProblem(const char* what);

  ByteSource& deflated_;
  std::unique_ptr<Stream> stream_;
  std::vector<std::uint8_t> input_;
  std::uint64_t input_end_ = 0;  // in the deflated stream
  std::vector<std::uint8_t> piece_;
  std::vector<std::uint8_t> before_;  // the piece before it
  std::size_t before_size_ = 0;
  std::uint64_t piece_begin_ = 0;
  std::size_t piece_size_ = 0;
  bool ended_ = false;
  std::uint64_t size_ = 0;
  std::string problem_;
};

}  // namespace host

#endif  // HOST_DATASET_INFLATED_SOURCE_H_
