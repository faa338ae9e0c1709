// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The descriptor of a Mach-O file of 64 MiB beside SHA-1 alone over the same bytes: the reader is to reach nine tenths
// of the digest's speed at least (counter `ratio_to_sha1`).

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "host/linux/ElfExecutableDescriptor.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/NettleCryptography.h"
#include "macho/QELMachOProcessor.h"
#include "tests/macho/MachOBuilder.h"

namespace {

using namespace vantrell;

constexpr std::size_t kContentSize = std::size_t{64} << 20;
constexpr std::size_t kSections = 32;

class SilentLog final : public host::SystemLog {
 public:
  bool isRecording() const noexcept override { return false; }
  void write(std::string_view, std::string_view, host::LogLevel, std::string_view) noexcept override {}
};

/// The file on disk, removed at the end.
class MachOFile {
 public:
  MachOFile() {
    std::string folder = (std::filesystem::temp_directory_path() / "vantrell-macho-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = folder;
    std::vector<tests::SectionToBuild> sections;
    std::string content(kContentSize / kSections, '\0');
    for (std::size_t index = 0; index < kSections; ++index) {
      std::uint32_t number = static_cast<std::uint32_t>(index);
      for (char& byte : content) byte = static_cast<char>((number = number * 1664525 + 1013904223) >> 24);
      sections.push_back({"__TEXT", fmt::format("s{}", index), content, 0, {}, {}});
    }
    const Data file = tests::MachOBuilder().segment("__TEXT", std::move(sections)).build();
    std::ofstream(path(), std::ios::binary) << textOf(file);
  }
  MachOFile(const MachOFile&) = delete;
  MachOFile& operator=(const MachOFile&) = delete;
  ~MachOFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  std::string path() const { return (folder_ / "program").string(); }

 private:
  std::filesystem::path folder_;
};

/// Processor time, which other programs on the machine disturb less than they do a clock on the wall.
template <class Body>
double secondsOf(Body body) {
  const std::clock_t start = std::clock();
  body();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void descriptorOfAFile(benchmark::State& state) {
  const MachOFile file;
  host::LinuxFileSystem fileSystem;
  host::NettleCryptography cryptography;
  SilentLog log;
  const auto loaded = fileSystem.loadFile(file.path(), QELMachOProcessor::kMaximumFileSize).value();
  const DataView contents = loaded->bytes().last(kContentSize);

  // One after the other in each round, so that both meet the same machine; the best rounds are compared.
  double digestTime = std::numeric_limits<double>::infinity();
  double readerTime = digestTime;
  for (auto _ : state) {
    digestTime = std::min(digestTime, secondsOf([&] { benchmark::DoNotOptimize(cryptography.sha1(contents)); }));
    const double time = secondsOf([&] {
      const auto reader = QELMachOProcessor::initForFileAtPath(file.path(), fileSystem, cryptography, log);
      if (!reader) throw std::runtime_error("the file could not be read");
      benchmark::DoNotOptimize(reader->partDescriptors().front());
    });
    readerTime = std::min(readerTime, time);
    state.SetIterationTime(time);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kContentSize));
  state.counters["ratio_to_sha1"] = digestTime / readerTime;
  state.counters["sha1_bytes_per_second"] = benchmark::Counter(static_cast<double>(kContentSize) / digestTime);
}
BENCHMARK(descriptorOfAFile)->UseManualTime()->Unit(benchmark::kMillisecond);

void descriptorOfThisElfExecutable(benchmark::State& state) {
  host::LinuxFileSystem fileSystem;
  host::NettleCryptography cryptography;
  host::ElfExecutableDescriptor descriptor(fileSystem, cryptography);
  for (auto _ : state) benchmark::DoNotOptimize(descriptor.descriptorsForFileAtPath("/proc/self/exe").value());
}
BENCHMARK(descriptorOfThisElfExecutable)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
