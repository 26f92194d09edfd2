#ifndef HOST_MODULE_MODULE_SESSION_H_
#define HOST_MODULE_MODULE_SESSION_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/module/decode_controls.h"
#include "host/module/host_window.h"
#include "host/module/module.h"
#include "host/module/packet_list.h"
#include "host/rows/decoded_row.h"
#include "host/rows/row_trace.h"
#include "host/streams/connection.h"

namespace host {

// One connection shown to the module: its host window, its lists, where their
// rows were on the wire, and the decodes of its rows. Both programs drive the
// module by nothing else. When a failure leaves a display, the module is loaded
// again, since it takes no further one, and the lists have to be read anew.
// Whatever lets the module read packets throws Failure when the capture cannot
// be read any more.
class ModuleSession {
 public:
  // All three must outlive the session. `controls` are for decodes that nobody
  // sees and may serve other sessions as well. Throws Failure.
  ModuleSession(Module& module, DecodeControls& controls,
                const Connection& connection);

  // Reads on in the lists until they hold all that the feed has by now, or
  // until `progress` answers false. `growing`: the feed may get more. Throws
  // Failure when the module has to be loaded again and cannot be.
  void ReadLists(bool growing, const PacketList::Progress& progress = nullptr);
  // Whether nothing is left to be read, and the module still knows it.
  bool IsListed(bool growing) const;
  unsigned Percent() const;  // of the packets, taken by now
  // The lists are read anew from the first packet on, whatever went wrong in
  // them; the rows stay counted.
  void Refresh();
  // What went wrong while reading, one whole sentence each.
  const std::vector<std::string>& Notes() const { return list_->Notes(); }

  // Rows that were listed, and those of them that the module can deliver at the
  // moment: fewer while one that was loaded again catches up.
  std::uint32_t Count(ListKind list) const;
  std::uint32_t Available(ListKind list) const;
  // At most DICOM_ROWS_PER_CALL rows from `first` on; fewer at the end.
  std::vector<ListedRow> Page(ListKind list, std::uint32_t first);
  std::vector<ListedRow> AllRows(ListKind list);

  // Where the rows were on the wire. A row is traced when all rows before it
  // have been fetched in pages; TraceNewRows fetches those that were not.
  const RowTrace& Trace(ListKind list) const { return traces_[IndexOf(list)]; }
  void TraceNewRows();

  // What the displays leave out and expand: see DisplayState.
  DisplayState& State() { return window_.State(); }
  // Each shows a row that the module can deliver, and answers why the decode
  // stopped before its end; nothing when it did not.
  std::optional<std::string> Display(RowRef row, const DecodeWindows& windows);
  std::optional<std::string> Save(RowRef row, std::int32_t file);
  std::optional<std::string> Print(RowRef row, const Paper& paper);
  // Displays the row where nobody sees it and reads back what came. Reads the
  // lists anew before it if it must, as Save does.
  DecodedRow Decode(RowRef row);

 private:
  static std::size_t IndexOf(ListKind list) {
    return list == ListKind::kMessages ? 1 : 0;
  }
  // What the list calls have to say.
  bool WantsLive(bool growing) const { return connection_.live || growing; }
  bool IsKnownToModule() const { return generation_ == module_.Generation(); }
  void CountRows();
  // Display() without what it throws.
  std::optional<std::string> CallDisplay(RowRef row,
                                         const DecodeWindows& windows);
  // Displays the row with its lines going elsewhere.
  std::optional<std::string> Divert(DisplayState::Output output, RowRef row);

  Module& module_;
  DecodeControls& controls_;
  const Connection& connection_;
  HostWindow window_;
  std::optional<PacketList> list_;  // always there but inside Refresh
  std::array<RowTrace, 2> traces_;  // by list
  // What the module's lists hold, as of their last reading.
  unsigned generation_;      // of the module that was read by
  bool read_whole_ = false;  // `packets_` packets, said to be `live_`
  bool live_ = true;
  std::uint32_t packets_ = 0;
  std::array<std::uint32_t, 2> counts_{};
  std::array<std::uint32_t, 2> available_{};
};

}  // namespace host

#endif  // HOST_MODULE_MODULE_SESSION_H_
