// capdump: lists and decodes the DICOM traffic of a capture file on a console.

#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/capdump/options.h"
#include "host/capdump/progress_line.h"
#include "host/capdump/report.h"
#include "host/capture/capture_reader.h"
#include "host/module/decode_view.h"
#include "host/module/module.h"
#include "host/module/module_files.h"
#include "host/module/module_session.h"
#include "host/module/save_file.h"
#include "host/streams/ae_titles.h"
#include "host/streams/capture_loader.h"
#include "host/text/failure.h"
#include "host/text/text_encoding.h"
#include "host/text/wide_text.h"

namespace host {
namespace {

enum ExitCode { kSuccess = 0, kUnreadable = 1, kWrongCommandLine = 2 };

// Whoever read our output has gone away; nothing is wrong.
class ReaderGone : public std::exception {};

[[noreturn]] void RaiseWriteFailure() {
  const DWORD error = GetLastError();
  const auto output = reinterpret_cast<HANDLE>(_get_osfhandle(1));
  if (GetFileType(output) == FILE_TYPE_PIPE) throw ReaderGone();
  throw Failure("the output cannot be written (" + SystemErrorText(error) +
                "); check where it goes to");
}

void WriteToStandardOutput(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    RaiseWriteFailure();
  }
}

void FlushStandardOutput() {
  if (std::fflush(stdout) != 0) RaiseWriteFailure();
}

int Complain(const std::exception& failure, int exit_code) {
  std::fflush(stdout);
  const std::string_view text = failure.what();
  std::fprintf(stderr, "capdump: %s%s\n", failure.what(),
               text.ends_with('.') ? "" : ".");
  return exit_code;
}

std::wstring ModulePath(const Options& options) {
  return options.module.empty() ? ModuleBesideProgram()
                                : FileName(options.module);
}

void PrintVersion(const Options& options) {
  Module module(ModulePath(options));
  WriteToStandardOutput("capdump 1.1\n" + ModuleVersionText(module));
}

std::vector<Connection> ReadConnections(CaptureLoader& loader) {
  ProgressLine progress;
  loader.Read([&] {
    progress.Show("reading the capture", loader.percent());
    return false;
  });
  return loader.connections().Take();
}

// Shows the connections of one capture through the module.
class Dump {
 public:
  explicit Dump(const Options& options)
      : options_(options),
        module_(ModulePath(options)),
        decodes_(options.hex ? DecodeView::HexWindow::kEdit
                             : DecodeView::HexWindow::kPlain),
        report_(options.json ? MakeJsonReport(WriteToStandardOutput)
                             : MakeTextReport(WriteToStandardOutput)) {
    if (!options.save_file.empty()) {
      save_file_ = std::make_unique<SaveFile>(FileName(options.save_file),
                                              "name another file with --save");
    }
  }

  void Run(const std::vector<Connection>& connections) {
    connections_ = connections.size();
    RequireConnection();
    report_->BeginCapture(options_.capture, connections.size(),
                          CountDicom(connections));
    for (std::size_t i = 0; i < connections.size(); ++i) {
      if (IsShown(i, connections[i])) {
        ShowConnection(static_cast<std::uint32_t>(i) + 1, connections[i]);
      }
    }
    RequireRow();
  }

 private:
  static std::size_t CountDicom(const std::vector<Connection>& connections) {
    return static_cast<std::size_t>(
        std::count_if(connections.begin(), connections.end(),
                      [](const Connection& one) { return one.carries_dicom; }));
  }

  bool IsShown(std::size_t index, const Connection& connection) const {
    if (options_.connection) return index + 1 == *options_.connection;
    return options_.all_connections || connection.carries_dicom;
  }

  void RequireConnection() const {
    if (!options_.connection || *options_.connection <= connections_) return;
    throw UsageError("there is no connection " +
                     std::to_string(*options_.connection) +
                     " in this capture, which holds " +
                     std::to_string(connections_) + "; --all lists them");
  }

  void RequireRow() const {
    if (!options_.row || row_was_found_) return;
    throw UsageError("no list has a row " + std::to_string(*options_.row) +
                     "; without --row all rows are shown");
  }

  void ShowConnection(std::uint32_t number, const Connection& connection) {
    number_ = number;
    ModuleSession session(module_, decodes_, connection);
    session.State().SetShowMessageData(!options_.no_message_data);
    session.List().Read([this, number](unsigned percent) {
      progress_.Show("listing connection " + std::to_string(number) + " of " +
                         std::to_string(connections_),
                     percent);
      return true;
    });
    progress_.Clear();
    const auto pdus = session.List().AllRows(ListKind::kPdus);
    const auto messages = session.List().AllRows(ListKind::kMessages);
    ReportedConnection reported;
    reported.number = number;
    reported.connection = &connection;
    reported.ae_titles = FindAeTitles(*connection.feed);
    reported.pdus = pdus.size();
    reported.messages = messages.size();
    reported.notes = connection.notes;
    const auto& notes = session.List().Notes();
    reported.notes.insert(reported.notes.end(), notes.begin(), notes.end());
    report_->BeginConnection(reported);
    for (const ListKind view : options_.views) {
      ShowView(session, view,
               view == ListKind::kPdus
                   ? TraceRows(pdus, connection.pdus)
                   : TraceRows(messages, connection.messages));
    }
  }

  void ShowView(ModuleSession& session, ListKind view,
                std::vector<ReportedRow> rows) {
    if (options_.row) {
      std::erase_if(rows, [this](const ReportedRow& row) {
        return row.position != *options_.row;
      });
    }
    report_->BeginView(view, rows);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      progress_.Show("decoding connection " + std::to_string(number_) + " of " +
                         std::to_string(connections_),
                     static_cast<unsigned>(i * 100 / rows.size()));
      ShowRow(session, view, rows[i]);
    }
    progress_.Clear();
  }

  void ShowRow(ModuleSession& session, ListKind view, const ReportedRow& row) {
    if (row.position == 0) {  // nothing that the module could show
      report_->Row(row, nullptr, nullptr, {});
      return;
    }
    row_was_found_ = true;
    DecodedRow decoded;
    if (options_.tree || options_.hex) {
      decoded = session.Display(view, row.position - 1);
    }
    if (save_file_) {
      const std::string stopped =
          session.Save(view, row.position - 1, save_file_->Handle());
      if (decoded.stopped.empty()) decoded.stopped = stopped;
    }
    report_->Row(row, options_.tree ? &decoded.tree : nullptr,
                 options_.hex ? &decoded.hex : nullptr, decoded.stopped);
  }

  const Options& options_;
  Module module_;
  DecodeView decodes_;
  std::unique_ptr<Report> report_;
  std::unique_ptr<SaveFile> save_file_;
  ProgressLine progress_;
  std::size_t connections_ = 0;  // in the capture
  std::uint32_t number_ = 0;     // of the connection that is being shown
  bool row_was_found_ = false;
};

int DumpCapture(const Options& options) {
  CaptureLoader loader(
      FileName(options.capture),
      {.hand_over = options.as_captured ? HandOver::kAsCaptured
                                        : HandOver::kCleanStreams,
       .filter = options.filter});
  const std::vector<Connection> connections = ReadConnections(loader);
  Dump(options).Run(connections);
  for (const std::string& note : loader.Notes()) {
    Complain(Failure(note), kSuccess);
  }
  return loader.Damage().empty() ? kSuccess : kUnreadable;
}

int Run(const std::vector<std::string>& arguments) {
  const Options options = ParseOptions(arguments);
  if (options.help) {
    WriteToStandardOutput(HelpText());
    return kSuccess;
  }
  if (options.version) {
    PrintVersion(options);
    return kSuccess;
  }
  return DumpCapture(options);
}

// Everything is written in UTF-8 with LF, also to a console and through Wine.
void PrepareOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  std::setvbuf(stdout, nullptr, _IOFBF, 1 << 18);
}

int Main(int count, wchar_t** names) {
  PrepareOutput();
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Utf8FromWide(names[i]));
  try {
    const int exit_code = Run(arguments);
    FlushStandardOutput();
    return exit_code;
  } catch (const ReaderGone&) {
    return kSuccess;
  } catch (const UsageError& failure) {
    return Complain(failure, kWrongCommandLine);
  } catch (const FilterError& failure) {
    return Complain(failure, kWrongCommandLine);
  } catch (const std::bad_alloc&) {
    return Complain(Failure("the capture does not fit into memory; show less "
                            "of it with --filter"),
                    kUnreadable);
  } catch (const std::exception& failure) {
    return Complain(failure, kUnreadable);
  }
}

}  // namespace
}  // namespace host

int wmain(int count, wchar_t** names) { return host::Main(count, names); }
