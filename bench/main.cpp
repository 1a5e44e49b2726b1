// zvpcv_bench: every exported image function beside a plain loop, scalar and vectorised, and a plain copy.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "cases.h"
#include "report.h"

namespace bench {
namespace {

constexpr RoiSize kTabled{640, 480}, kSizes[] = {{128, 128}, kTabled, {1920, 1080}};

struct Options {
  std::regex filter{""};
  int repetitions = 9;
  double seconds = 0.02;  // of one repetition, at least
  std::string chart;
  bool list = false, markdown = false;
  std::string earlier;  // the output of a run
};

const char* const kHelp =
    "zvpcv_bench [--filter=REGEX] [--quick] [--chart=FILE] [--markdown[=RUN]] [--list] [--help]\n"
    "Measures the image functions of zvpCV on one thread, each beside a plain copy and a plain loop, which is "
    "compiled\n"
    "twice: as scalar code, and with -O3 and vectorisation for x86-64-v3.\n"
    "  --filter=REGEX  only rows whose name and size match, as in --filter='AbsDiff.* 640x480'\n"
    "  --quick         shorter and fewer repetitions\n"
    "  --chart=FILE    also writes a picture (SVG): how many times faster than the plain loops each row is\n"
    "  --markdown=RUN  prints tables in Markdown, of 640x480 only; with a column for another build of the library if\n"
    "                  RUN is a file with the output of a run with that\n"
    "  --list          only prints the names of the functions that the rows measure\n"
    "LD_LIBRARY_PATH chooses another build of the library; the first line of the output names the one in use.\n";

// --- Measuring -------------------------------------------------------------------------------------------------------

// Keeps the fastest repetition of each benchmark: what disturbs a run only ever makes it slower.
class FastestTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const auto [entry, isNew] = nanoseconds.try_emplace(run.run_name.function_name, run.GetAdjustedCPUTime());
      if (!isNew) entry->second = std::min(entry->second, run.GetAdjustedCPUTime());
    }
  }

  std::map<std::string, double> nanoseconds;
};

void add(const char* name, const std::function<void()>& run, const Options& options) {
  const auto loop = [&run](benchmark::State& state) {
    for (auto _ : state) {
      run();
      benchmark::ClobberMemory();
    }
  };
  benchmark::RegisterBenchmark(name, loop)
      ->Unit(benchmark::kNanosecond)
      ->MinTime(options.seconds)
      ->Repetitions(options.repetitions);
}

// Reads half of the bytes and writes the other half.
std::function<void()> copyOf(std::size_t bytes) {
  const int half = static_cast<int>(bytes / 2);
  const auto src = randomImage<std::uint8_t>(half, 1, 3);
  const Image<std::uint8_t> dst(half, 1);
  return [=] { std::memcpy(dst.data(), src.data(), static_cast<std::size_t>(half)); };
}

// The repetitions of all take turns, so that their ratios hold on a machine whose speed changes.
Times measure(const Work& work, const Work& vectorised, const Options& options) {
  const std::pair<const char*, std::function<void()>> parts[] = {
      {"library", work.library},
      {"plain", work.plain},
      {"vectorised", vectorised.plain},
      {"copy", work.bytes > 0 ? copyOf(work.bytes) : nullptr},
  };
  for (const auto& [name, run] : parts)
    if (run) add(name, run, options);
  FastestTimes fastest;
  benchmark::RunSpecifiedBenchmarks(&fastest, "all");
  benchmark::ClearRegisteredBenchmarks();
  auto& ns = fastest.nanoseconds;
  return {ns["library"], ns["plain"], ns["vectorised"], ns["copy"]};
}

// Measuring a wrong result would say nothing.
bool agrees(const Work& work) {
  if (!work.plain) return true;
  work.library();
  work.plain();
  return work.agree();
}

// --- Rows ------------------------------------------------------------------------------------------------------------

struct Cases {
  std::vector<Section> images = scalar::imageSections(), vectorised;
  Section objects{"Objects", scalar::objectCases()};

  Cases() {
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma"))
      vectorised = vectorised::imageSections();
  }
};

std::vector<Row> selectedRows(const Cases& cases, const Options& options) {
  std::vector<Row> rows;
  for (std::size_t s = 0; s < cases.images.size(); ++s) {
    const Section& section = cases.images[s];
    for (std::size_t i = 0; i < section.cases.size(); ++i) {
      const Case* vectorised = cases.vectorised.empty() ? nullptr : &cases.vectorised[s].cases[i];
      for (const RoiSize size : kSizes) rows.push_back({&section.cases[i], vectorised, &section.title, size});
    }
  }
  for (const Case& c : cases.objects.cases) rows.push_back({&c, nullptr, &cases.objects.title, {0, 0}});
  std::erase_if(rows, [&](const Row& row) {
    return (options.markdown && row.size.width != kTabled.width) || !std::regex_search(row.name(), options.filter);
  });
  return rows;
}

void printNames(const std::vector<Row>& rows) {
  std::set<std::string> names;
  for (const Row& row : rows) names.insert(row.what->function());
  for (const std::string& name : names) std::puts(name.c_str());
}

void showProgress(std::size_t done, std::size_t all, const std::string& name) {
  constexpr const char* kEraseLine = "\r\033[K";
  if (!isatty(STDERR_FILENO)) return;
  std::fprintf(stderr, "%s", kEraseLine);
  if (done < all) std::fprintf(stderr, "[%zu/%zu] %s", done + 1, all, name.c_str());
}

// False where a result differs from the plain loop's.
bool measureAll(std::vector<Row>& rows, const Options& options) {
  bool allAgree = true;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    showProgress(i, rows.size(), rows[i].name());
    const Row& row = rows[i];
    const Work work = row.what->make(row.size), vectorised = row.vectorised ? row.vectorised->make(row.size) : Work{};
    if (!agrees(work) || !agrees(vectorised)) {
      std::fprintf(stderr, "%s: differs from the plain loop\n", row.name().c_str());
      allAgree = false;
    }
    rows[i].times = measure(work, vectorised, options);
  }
  showProgress(rows.size(), rows.size(), "");
  return allAgree;
}

// --- The program -----------------------------------------------------------------------------------------------------

// False where the program should end: help was asked for, or an option is wrong.
bool parse(int argc, char** argv, Options& options, int& exitCode) {
  const option known[] = {{"filter", required_argument, nullptr, 'f'},
                          {"quick", no_argument, nullptr, 'q'},
                          {"chart", required_argument, nullptr, 'c'},
                          {"markdown", optional_argument, nullptr, 'm'},
                          {"list", no_argument, nullptr, 'l'},
                          {"help", no_argument, nullptr, 'h'},
                          {}};
  for (int c; (c = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
    if (c == 'f') {
      options.filter = std::regex(optarg);
    } else if (c == 'c') {
      options.chart = optarg;
    } else if (c == 'm') {
      options.markdown = true;
      options.earlier = optarg != nullptr ? optarg : "";
    } else if (c == 'l') {
      options.list = true;
    } else if (c == 'q') {
      options.repetitions = 3;
      options.seconds = 0.003;
    } else {
      exitCode = c == 'h' ? EXIT_SUCCESS : EXIT_FAILURE;
      std::fputs(kHelp, c == 'h' ? stdout : stderr);
      return false;
    }
  }
  return true;
}

std::string libraryPath() {
  Dl_info info{};
  dladdr(dlsym(RTLD_DEFAULT, "zvpcvGetLibVersion"), &info);
  return info.dli_fname != nullptr ? info.dli_fname : "unknown";
}

void startBenchmarkLibrary(char* programName) {
  char interleave[] = "--benchmark_enable_random_interleaving=true";
  char* arguments[] = {programName, interleave, nullptr};
  int count = 2;
  benchmark::Initialize(&count, arguments);
}

int run(int argc, char** argv) {
  Options options;
  int exitCode = EXIT_SUCCESS;
  if (!parse(argc, argv, options, exitCode)) return exitCode;
  const Cases cases;
  std::vector<Row> rows = selectedRows(cases, options);
  if (options.list) {
    printNames(rows);
    return exitCode;
  }
  startBenchmarkLibrary(argv[0]);
  if (!options.markdown) std::printf("library: %s\n", libraryPath().c_str());
  std::fflush(stdout);
  if (!measureAll(rows, options)) exitCode = EXIT_FAILURE;
  options.markdown ? printMarkdown(rows, libraryPath(), options.earlier) : printTable(rows);
  if (!options.chart.empty() && !drawChart(rows, options.chart)) {
    std::fprintf(stderr, "%s: cannot be written\n", options.chart.c_str());
    exitCode = EXIT_FAILURE;
  }
  return exitCode;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) try { return bench::run(argc, argv); } catch (const std::regex_error& error) {
  std::fprintf(stderr, "--filter: %s\n", error.what());
  return EXIT_FAILURE;
}
