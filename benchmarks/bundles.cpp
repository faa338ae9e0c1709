// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Inspecting many packages: the aim is 500 of them in half a second.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "bundles/QELBundle.h"
#include "foundation/PropertyList.h"
#include "foundation/Value.h"
#include "host/linux/LinuxApplications.h"
#include "host/linux/LinuxFileSystem.h"

namespace vantrell {
namespace {

constexpr int kPackages = 500;

/// An information file as applications have them: some kilobytes, most of it about documents.
Dictionary information(int number) {
  Array documents;
  for (int i = 0; i < 40; ++i) {
    documents.push_back(Dictionary{{"CFBundleTypeName", fmt::format("Document of kind {}", i)},
                                   {"CFBundleTypeRole", "Editor"},
                                   {"CFBundleTypeExtensions", Array{fmt::format("e{}", i), fmt::format("f{}", i)}},
                                   {"LSHandlerRank", "Alternate"}});
  }
  return {{"CFBundleExecutable", "main"},
          {"CFBundleIdentifier", fmt::format("org.example.application{}", number)},
          {"CFBundleShortVersionString", "1.2"},
          {"CFBundleVersion", std::to_string(number)},
          {"CFBundleDocumentTypes", documents}};
}

/// Applications in a folder of their own, gone at the end.
class Packages {
 public:
  explicit Packages(bool binary) {
    folder_ = (std::filesystem::temp_directory_path() / "bundles-XXXXXX").string();
    if (!mkdtemp(folder_.data())) throw std::runtime_error("no folder could be made");
    for (int i = 0; i < kPackages; ++i) {
      paths_.push_back(fmt::format("{}/Application {}.app", folder_, i));
      std::filesystem::create_directories(paths_.back() + "/Contents/Resources/de.lproj");
      std::filesystem::create_directories(paths_.back() + "/Contents/MacOS");
      std::ofstream(paths_.back() + "/Contents/MacOS/main") << "main";
      const auto list = binary ? binaryPropertyListFromValue(information(i)) : xmlPropertyListFromValue(information(i));
      std::ofstream(paths_.back() + "/Contents/Info.plist", std::ios::binary) << textOf(list.value());
    }
  }
  Packages(const Packages&) = delete;
  Packages& operator=(const Packages&) = delete;
  ~Packages() { std::filesystem::remove_all(folder_); }

  const std::string& folder() const { return folder_; }
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  std::string folder_;
  std::vector<std::string> paths_;
};

void inspectPackages(benchmark::State& state) {
  const Packages packages(state.range(0) != 0);
  host::LinuxFileSystem fileSystem;
  host::LinuxApplications applications(fileSystem);
  for (auto _ : state) {
    for (const auto& path : packages.paths()) {
      const auto bundle = QELBundle::initWithPath(path, fileSystem, applications);
      if (!bundle || bundle->softwareType() != SoftwareType::Application) state.SkipWithError("not an application");
      benchmark::DoNotOptimize(bundle);
    }
  }
  state.SetItemsProcessed(state.iterations() * kPackages);
}
BENCHMARK(inspectPackages)->ArgName("binary")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void askPackagesEverything(benchmark::State& state) {
  const Packages packages(true);
  host::LinuxFileSystem fileSystem;
  host::LinuxApplications applications(fileSystem);
  for (auto _ : state) {
    for (const auto& path : packages.paths()) {
      const auto bundle = QELBundle::initWithPath(path, fileSystem, applications);
      if (!bundle || !bundle->executablePath()) {
        state.SkipWithError("no executable");
        return;
      }
      benchmark::DoNotOptimize(bundle->namesOfActiveLocalizations());
      benchmark::DoNotOptimize(bundle->servicesEntries());
      benchmark::DoNotOptimize(bundle->isCodesigned());
      benchmark::DoNotOptimize(bundle->isMRJApplication());
      benchmark::DoNotOptimize(bundle->isRevolutionApplication());
    }
  }
}
BENCHMARK(askPackagesEverything)->Unit(benchmark::kMillisecond)->UseRealTime();

void findByIdentifier(benchmark::State& state) {
  const Packages packages(true);
  host::LinuxFileSystem fileSystem;
  host::LinuxApplications applications(fileSystem, {packages.folder()}, {});
  for (auto _ : state) {
    const auto found = applications.locationsOfApplicationsWithIdentifier("org.example.application77");
    if (found.size() != 1) state.SkipWithError("not found");
  }
}
BENCHMARK(findByIdentifier)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
