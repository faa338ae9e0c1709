// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// A whole request, "nop", from the client's call to its answer, beside a bare sd-bus echo over a socket pair.

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <sched.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/RequestToken.h"
#include "core/ClassRegistry.h"
#include "core/QELPrivilegedTool.h"
#include "host/Host.h"
#include "host/linux/LinuxTransport.h"
#include "host/linux/NoLog.h"

namespace vantrell {
namespace {

constexpr std::uint64_t kNop = 9998;

/// The far side of the bare exchange: one bus, one thread, one method that answers with nothing.
class EchoPeer {
 public:
  explicit EchoPeer(int descriptor) : thread_([this, descriptor] { serve(descriptor); }) {}
  ~EchoPeer() { thread_.join(); }

 private:
  static int answer(sd_bus_message* message, void*, sd_bus_error*) { return sd_bus_reply_method_return(message, ""); }

  static void serve(int descriptor) {
    static constexpr sd_bus_vtable kMethods[] = {SD_BUS_VTABLE_START(0),
                                                 SD_BUS_METHOD("Echo", "tay", "", answer, SD_BUS_VTABLE_UNPRIVILEGED),
                                                 SD_BUS_VTABLE_END};
    sd_bus* bus = nullptr;
    sd_id128_t identifier{};
    sd_bus_new(&bus);
    sd_bus_set_fd(bus, descriptor, descriptor);
    sd_bus_set_server(bus, 1, identifier);
    sd_bus_add_object_vtable(bus, nullptr, "/echo", "bench.Echo", kMethods, nullptr);
    sd_bus_start(bus);
    for (;;) {
      const int processed = sd_bus_process(bus, nullptr);
      if (processed < 0) break;
      if (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) break;
    }
    sd_bus_close_unref(bus);
  }

  std::thread thread_;
};

/// Seconds that one bare exchange takes.
class BareEcho {
 public:
  BareEcho() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) std::abort();
    peer_ = std::make_unique<EchoPeer>(ends[1]);
    sd_bus_new(&bus_);
    sd_bus_set_fd(bus_, ends[0], ends[0]);
    sd_bus_start(bus_);
  }
  ~BareEcho() {
    sd_bus_close_unref(bus_);
    peer_.reset();
  }

  void exchange(const Data& payload) {
    sd_bus_message* request = nullptr;
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_call(bus_, &request, nullptr, "/echo", "bench.Echo", "Echo");
    sd_bus_message_append(request, "t", kNop);
    sd_bus_message_append_array(request, 'y', payload.data(), payload.size());
    if (sd_bus_call(bus_, request, 0, nullptr, &reply) < 0) std::abort();
    sd_bus_message_unref(reply);
    sd_bus_message_unref(request);
  }

 private:
  std::unique_ptr<EchoPeer> peer_;
  sd_bus* bus_ = nullptr;
};

/// The real service in this process on one end of a socket pair's listening socket, and a registered client.
class Service {
 public:
  Service() : host_(host::makeHost()) {
    host_.systemLog = std::make_unique<host::NoLog>();
    set_ = std::make_unique<QELPrivilegedToolOperationSetLM4>(*host_.systemLog);
    log_ = std::make_unique<Log>(*host_.systemLog);
    auto transport = std::make_unique<ListeningTransport>(*host_.systemLog);
    const auto address = "unix:path=" + transport->path();
    host_.transport = std::move(transport);
    tool_ = QELPrivilegedTool::initForOperationSet(set_.get(), log_.get(), host_, classes_);
    if (!tool_ || tool_->startListening()) std::abort();
    connection_ = std::move(host_.clientTransport->connectToAddress(address).value());
    const auto salt = connection_->registerClientWithPID(host_.currentProcess->identifier());
    key_ = set_->keyForPrefix(*tool_->keyPrefix(), salt.value()).value();
  }

  Data token() {
    const auto envelope = set_->standaloneDataForConcretePrivilegedOperation(kNop, Array{}, host_);
    return makeRequestToken(static_cast<std::uint64_t>(host_.currentProcess->identifier()), key_, *envelope,
                            *host_.cryptography)
        .value();
  }

  void nop(const Data& token) {
    const auto answer = connection_->performPrivilegedOperation(kNop, token, nullptr, {});
    if (!answer || *answer) std::abort();
  }

 private:
  class ListeningTransport final : public host::Transport {
   public:
    explicit ListeningTransport(host::SystemLog& log)
        : transport_(log), path_("/tmp/vantrell-bench-" + std::to_string(getpid())) {
      sockaddr_storage storage{};
      auto* address = reinterpret_cast<sockaddr*>(&storage);
      address->sa_family = AF_UNIX;
      path_.copy(address->sa_data, sizeof storage - sizeof(sa_family_t) - 1);
      socket_ = host::FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
      unlink(path_.c_str());
      const auto length = static_cast<socklen_t>(sizeof(sa_family_t) + path_.size() + 1);
      if (bind(socket_.get(), address, length) != 0 || listen(socket_.get(), 16) != 0) std::abort();
    }
    ~ListeningTransport() override { unlink(path_.c_str()); }
    const std::string& path() const { return path_; }

    Result<std::unique_ptr<host::Listener>> makeListener(std::string_view) override {
      return transport_.makeListenerOnSocket(std::move(socket_));
    }
    Result<std::shared_ptr<host::FeedbackConnection>> connectionToEndpoint(
        std::unique_ptr<host::Endpoint> endpoint) override {
      return transport_.connectionToEndpoint(std::move(endpoint));
    }

   private:
    host::LinuxTransport transport_;
    std::string path_;
    host::FileDescriptor socket_;
  };

  host::Host host_;
  ClassRegistry classes_ = ClassRegistry::standard();
  std::unique_ptr<QELPrivilegedToolOperationSetLM4> set_;
  std::unique_ptr<Log> log_;
  std::unique_ptr<QELPrivilegedTool> tool_;
  std::unique_ptr<host::ServiceConnection> connection_;
  Data key_;
};

double secondsFor(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Where the calling thread, and all that it starts from here on, runs; -1 for anywhere.
void runOn(int processor) {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  for (int i = 0; i < CPU_SETSIZE; ++i) {
    if (processor < 0 || i == processor) CPU_SET(i, &processors);
  }
  sched_setaffinity(0, sizeof processors, &processors);
}

/// Both kinds of exchange take turns, so that whatever else the machine does hits both alike.
///
/// With an argument of 1 the two sides have a processor each, as two processes have that don't disturb each other. Left
/// to itself (0) the scheduler puts both threads of the bare echo on one processor and the third thread of the service
/// on another, which then has to be woken from its sleep twice: on virtual machines that alone costs more than the
/// whole echo.
void nopBesideBareEcho(benchmark::State& state) {
  constexpr int kRound = 200;
  const bool isApart = state.range(0) != 0;
  if (isApart) runOn(1);
  BareEcho echo;
  Service service;
  service.nop(service.token());  // the worker, too, is there from now on
  runOn(isApart ? 0 : -1);
  const Data payload(300);
  double bare = 0;
  double whole = 0;
  for (auto _ : state) {
    const auto token = service.token();
    bare += secondsFor([&] {
      for (int i = 0; i < kRound; ++i) echo.exchange(payload);
    });
    const double elapsed = secondsFor([&] {
      for (int i = 0; i < kRound; ++i) service.nop(token);
    });
    whole += elapsed;
    state.SetIterationTime(elapsed);
  }
  runOn(-1);
  const auto exchanges = static_cast<double>(state.iterations()) * kRound;
  state.counters["echo_us"] = bare / exchanges * 1e6;
  state.counters["nop_us"] = whole / exchanges * 1e6;
  state.counters["ratio_to_echo"] = whole / bare;
}
BENCHMARK(nopBesideBareEcho)->ArgName("apart")->Arg(1)->Arg(0)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
