// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include <systemd/sd-bus.h>

namespace vantrell::host {

struct BusDeleter {
  /// Whatever still waits inside is dropped.
  void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
  void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
  void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
};

// sd-bus counts references without atomics, and every message and slot refers to its bus: making, copying and letting
// go of any of them belongs under the lock that guards the bus. Reading the contents of a message that one owns does
// not.
using Bus = std::unique_ptr<sd_bus, BusDeleter>;
using BusMessage = std::unique_ptr<sd_bus_message, BusDeleter>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusDeleter>;

}  // namespace vantrell::host
