#include "host/streams/tcp_connections.h"

#include <algorithm>

#include "host/streams/captured_connection.h"
#include "host/streams/clean_connection.h"

namespace host {

TcpConnections::TcpConnections(HandOver hand_over,
                               std::shared_ptr<ByteStore> store,
                               MakePduObserver observe,
                               std::shared_ptr<const FrameNames> frame_names,
                               CapturePart part)
    : hand_over_(hand_over),
      store_(std::move(store)),
      observe_(std::move(observe)),
      frame_names_(std::move(frame_names)),
      part_(part) {}

void TcpConnections::Add(const TcpFrame& frame) {
  // A clean stream has no use for a packet that ends before the TCP flags, and
  // it must not decide which side is the first; an analyzer would get it.
  if (hand_over_ == HandOver::kCleanStreams && !frame.header) return;
  const Key key = std::minmax(frame.source, frame.destination);
  Current& current = current_[key];
  if (current.passed || (current.builder == nullptr &&
                         !part_.Holds(frame.source, frame.destination))) {
    return Pass(frame, current);
  }
  if (current.builder == nullptr) Begin(frame, current);
  std::uint32_t direction = frame.source == current.first ? 0 : 1;
  if (current.builder->BeginsAnother(frame, direction)) {
    current.builder->Finish();
    NoteEnd(current);
    Begin(frame, current);
    direction = 0;
  }
  current.builder->Add(frame, direction);
  Touch(current);
}

void TcpConnections::Pass(const TcpFrame& frame, Current& current) {
  std::uint32_t direction = frame.source == current.first ? 0 : 1;
  if (!current.passed || current.passed->BeginsAnother(frame, direction)) {
    current.passed = std::make_unique<PassedConnection>(
        hand_over_ == HandOver::kCleanStreams);
    current.first = frame.source;
    direction = 0;
    ++begun_;
  }
  current.passed->Add(frame, direction);
}

void TcpConnections::Touch(Current& current) {
  if (current.touched) return;
  current.touched = true;
  touched_.push_back(&current);
}

void TcpConnections::NoteEnd(Current& current) {
  if (std::exchange(current.over, true)) return;
  ended_.push_back(&current.builder->connection());
}

void TcpConnections::Begin(const TcpFrame& frame, Current& current) {
  if (hand_over_ == HandOver::kCleanStreams) {
    builders_.push_back(std::make_unique<CleanConnection>(store_, observe_));
  } else {
    builders_.push_back(std::make_unique<CapturedConnection>(store_));
  }
  current.builder = builders_.back().get();
  current.over = false;
  current.builder->connection().frame_names = frame_names_;
  current.builder->connection().index = begun_++;
  current.first = frame.source;
}

void TcpConnections::Update(ConnectionBuilder::Clock::time_point now) {
  using enum ConnectionBuilder::Standing;
  for (Current* current : std::exchange(touched_, {})) {
    current->touched = false;
    const auto standing = current->builder->Update(now);
    if (standing == kClosing) Touch(*current);
    if (standing == kOver) NoteEnd(*current);
  }
}

void TcpConnections::Finish() {
  for (const auto& builder : builders_) builder->Finish();
}

std::vector<Connection> TcpConnections::Take() {
  std::vector<Connection> connections;
  connections.reserve(builders_.size());
  for (const auto& builder : builders_) {
    connections.push_back(std::move(builder->connection()));
  }
  touched_.clear();
  ended_.clear();
  current_.clear();
  builders_.clear();
  return connections;
}

}  // namespace host
