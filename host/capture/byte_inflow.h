#ifndef HOST_CAPTURE_BYTE_INFLOW_H_
#define HOST_CAPTURE_BYTE_INFLOW_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/capture/system_file.h"

namespace host {

// Bytes that come in order and once: those of a pipe, or what a compressed file
// holds.
class ByteInflow {
 public:
  virtual ~ByteInflow() = default;

  // Waits for the next bytes and answers how many they are; 0 at the end.
  // Throws Failure when the system refuses.
  virtual std::size_t Read(std::span<std::uint8_t> to) = 0;
  // Why the end came too early, as a clause; empty if it did not.
  virtual std::string damage() const { return {}; }
  // What somebody can do who has no room for the bytes, as in "do this".
  virtual std::string_view advice() const = 0;
};

// The bytes of a file or a pipe.
class FileInflow final : public ByteInflow {
 public:
  explicit FileInflow(std::unique_ptr<SystemFile> file)
      : file_(std::move(file)) {}

  // The first bytes, before any is read: `count` unless there are fewer.
  std::span<const std::uint8_t> Peek(std::size_t count);

  std::size_t Read(std::span<std::uint8_t> to) override;
  std::string_view advice() const override;

 private:
  std::unique_ptr<SystemFile> file_;
  std::vector<std::uint8_t> peeked_;  // and not read yet
};

// What gzip has compressed, in one piece or in several behind each other.
class GzipInflow final : public ByteInflow {
 public:
  static bool IsGzip(std::span<const std::uint8_t> first_bytes);

  explicit GzipInflow(std::unique_ptr<ByteInflow> compressed);
  ~GzipInflow() override;

  std::size_t Read(std::span<std::uint8_t> to) override;
  std::string damage() const override { return damage_; }
  std::string_view advice() const override;

 private:
  struct Stream;

  // More compressed bytes, if none are left; false at their end.
  bool Feed();

  std::unique_ptr<ByteInflow> compressed_;
  std::vector<std::uint8_t> input_;
  std::unique_ptr<Stream> stream_;
  bool between_members_ = false;  // one is over and nothing has followed yet
  bool over_ = false;
  std::string damage_;
};

}  // namespace host

#endif  // HOST_CAPTURE_BYTE_INFLOW_H_
