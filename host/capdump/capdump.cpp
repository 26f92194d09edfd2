#include "host/capdump/capdump.h"

#include <algorithm>
#include <exception>
#include <new>

#include "host/capdump/console.h"
#include "host/capdump/data_output.h"
#include "host/capdump/dialogue_reports.h"
#include "host/capdump/dump.h"
#include "host/capdump/ended_connections.h"
#include "host/capdump/follow.h"
#include "host/capdump/help_text.h"
#include "host/capdump/live_reading.h"
#include "host/capdump/options.h"
#include "host/capdump/overview.h"
#include "host/capdump/page_file.h"
#include "host/capdump/progress_line.h"
#include "host/capture/capture_reader.h"
#include "host/dialogue/dialogue_reader.h"
#include "host/module/module.h"
#include "host/module/module_version.h"
#include "host/streams/capture_loader.h"
#include "host/text/failure.h"
#include "host/text/file_name.h"
#include "host/text/number_text.h"

namespace host {
namespace {

enum ExitCode {
  kSuccess = 0,
  kUnreadable = 1,
  kWrongCommandLine = 2,
  kFaultFound = 3,
};

std::vector<Connection> ReadConnections(CaptureLoader& loader) {
  ProgressLine progress;
  loader.Read([&] {
    progress.Show("reading the capture", loader.percent());
    return false;
  });
  return loader.connections().Take();
}

// What messages carry needs no module.
void ShowData(const Options& options,
              const std::vector<Connection>& connections) {
  const DataOutput data(options, WriteOutput);
  if (DataOutput::IsWanted(options)) data.Show(connections);
  if (!options.export_folder.empty()) data.Export(connections);
}

// Null where none is asked for.
DialogueReport* ReportOf(const Options& options) {
  if (options.csv) return WriteTimingCsv;
  if (options.timing) return options.json ? WriteTimingJson : WriteTiming;
  if (options.contexts) return options.json ? WriteContextsJson : WriteContexts;
  return nullptr;
}

std::optional<std::uint64_t> MostTemporaryBytes(const Options& options) {
  constexpr std::uint64_t kMegabyte = 1'000'000;
  constexpr std::uint64_t kMost = 1u << 31;  // megabytes, which no disk has
  if (!options.most_temporary_megabytes) return {};
  return kMegabyte * std::min(*options.most_temporary_megabytes, kMost);
}

// What the options ask for; else what is wrong and what happened, or the lists.
void ShowWanted(const Options& options, const std::string& name,
                const std::vector<Connection>& connections,
                const Overview& overview) {
  if (!options.export_folder.empty() || DataOutput::IsWanted(options)) {
    return ShowData(options, connections);
  }
  if (DialogueReport* const write = ReportOf(options)) {
    return write(connections, options.connection, WriteOutput);
  }
  if (options.json) overview.ShowJson(options, WriteOutput);
  if (options.follow) {
    if (!options.json) overview.ShowFindings(options, WriteOutput);
  } else if (options.ShowsLists()) {
    Dump(options).Show(name, connections);
  } else if (!options.json) {
    overview.Show(options, name, WriteOutput);
  }
}

CaptureInputs FindInputs(const Options& options) {
  std::vector<std::filesystem::path> names;
  for (const std::string& name : options.captures) {
    names.push_back(PathFromUtf8(name));
  }
  CaptureInputs inputs = FindCaptures(names);
  if (inputs.files.empty()) throw CaptureError(inputs.failures.front());
  return inputs;
}

// "a.pcap", or "3 files, ring_1.pcap to ring_3.pcap".
std::string NameOf(const Options& options, const CaptureInputs& inputs,
                   const FrameNames& names) {
  if (names.HasSeveralFiles()) {
    return NumberText(names.size()) + " files, " + names.file(0) + " to " +
           names.file(names.size() - 1);
  }
  const auto& path = inputs.files.front().path;
  const std::string& named = options.captures.front();
  return path == PathFromUtf8(named) ? named : Utf8FromPath(path);
}

// `name`: as NameOf() says it; the folder is nobody else's business.
void WritePage(const Options& options, const std::string& name,
               const FrameNames& names, const Overview& overview) {
  const std::string told = names.HasSeveralFiles()
                               ? name
                               : Utf8FromPath(PathFromUtf8(name).filename());
  WritePageFile(options.page_file, [&](const Sink& sink) {
    overview.ShowPage(options, told == "-" ? "standard input" : told, sink);
  });
}

ExitCode DumpCapture(const Options& options) {
  const CaptureInputs inputs = FindInputs(options);
  std::optional<EndedConnections> ended;
  if (EndedConnections::AreShown(options)) ended.emplace(options);
  CaptureLoader loader(
      inputs.files, {.hand_over = options.as_captured ? HandOver::kAsCaptured
                                                      : HandOver::kCleanStreams,
                     .filter = options.filter,
                     .follow = options.follow || ended.has_value(),
                     .most_temporary = MostTemporaryBytes(options),
                     .part = options.part,
                     .observe = ReadDialogues()});
  if (IsPiped(options)) PassFirstInterrupt();
  if (options.follow) Follow(options).Run(loader);
  if (ended) ended->Run(loader);
  const std::vector<Connection> connections = ReadConnections(loader);
  if (options.connection) {
    RequireConnection(*options.connection, loader.connections().whole_size());
  }
  const Overview overview(connections, {.damage = loader.Damage()});
  const std::string name = NameOf(options, inputs, loader.names());
  if (!options.page_file.empty()) {
    WritePage(options, name, loader.names(), overview);
  }
  if (ended) {
    ended->ShowRest(name, connections, overview);
  } else {
    ShowWanted(options, name, connections, overview);
  }
  for (const std::string& failure : inputs.failures) Complain(failure);
  for (const std::string& note : loader.Notes()) Complain(note);
  if (!inputs.failures.empty() || !loader.Damage().empty()) return kUnreadable;
  return options.check && overview.HasFault(options) ? kFaultFound : kSuccess;
}

ExitCode Run(const std::vector<std::string>& arguments) {
  const Options options = ParseOptions(arguments);
  if (options.help) {
    WriteOutput(HelpText());
    return kSuccess;
  }
  if (options.version) {
    Module module(ModulePath(options));
    WriteOutput("capdump 1.1\n" + ModuleVersionText(module));
    return kSuccess;
  }
  return DumpCapture(options);
}

ExitCode EndWith(const std::exception& failure, ExitCode exit_code) {
  Complain(failure.what());
  return exit_code;
}

}  // namespace

int Capdump(const std::vector<std::string>& arguments) {
  PrepareConsole();
  try {
    const ExitCode exit_code = Run(arguments);
    FlushOutput();
    return exit_code;
  } catch (const ReaderGone&) {
    return kSuccess;
  } catch (const UsageError& failure) {
    return EndWith(failure, kWrongCommandLine);
  } catch (const FilterError& failure) {
    return EndWith(failure, kWrongCommandLine);
  } catch (const std::bad_alloc&) {
    return EndWith(Failure("The capture does not fit into memory: show less of "
                           "it with --filter."),
                   kUnreadable);
  } catch (const std::exception& failure) {
    return EndWith(failure, kUnreadable);
  }
}

}  // namespace host
