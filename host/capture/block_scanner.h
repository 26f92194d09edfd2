#ifndef HOST_CAPTURE_BLOCK_SCANNER_H_
#define HOST_CAPTURE_BLOCK_SCANNER_H_

#include <bit>
#include <cstdint>
#include <cstdio>

namespace host {

// Knows how much of a pcapng file that still grows can be read. libpcap must
// not meet a cut block there: it would have to read the blocks before it again,
// and an interface that is described twice counts as two.
class BlockScanner {
 public:
  enum class Next {
    kPacket,   // the blocks up to and with the next packet are whole
    kEnd,      // whole blocks without a packet follow, or none
    kCut,      // the file ends inside a block
    kDamaged,  // what follows is no block
  };

  // What follows in `file` at `position`, to which libpcap has read it, in
  // bytes from the beginning. Leaves the file there. Looks at each block once,
  // however often it is asked.
  Next Look(std::FILE* file, std::int64_t position);

 private:
  // Goes on over whole blocks behind the last packet that was found, moves
  // whole_until_ over those that hold packets, and answers what stopped it.
  Next Scan(std::FILE* file);

  std::int64_t whole_until_ = 0;  // behind the last packet that was found
  std::endian order_ = std::endian::little;  // of the section that it is in
};

}  // namespace host

#endif  // HOST_CAPTURE_BLOCK_SCANNER_H_
