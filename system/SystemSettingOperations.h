// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Error.h"
#include "foundation/Log.h"
#include "foundation/Value.h"
#include "host/FirmwareVariables.h"
#include "host/KernelSettings.h"
#include "host/Preferences.h"
#include "host/ProcessSignals.h"
#include "host/StorageDevices.h"
#include "host/SystemConfiguration.h"

namespace vantrell {

// The operations that change settings of the running system. Arguments that the catalogue would not have let through,
// too few of them or of other kinds, are POSIX error 22. Stateless; safe from any thread.

/// Arguments: a variable's name and its new value, taken as a signed 64-bit integer. Failures are POSIX errors.
ErrorOrNil modifyKernelsetting(const Array& arguments, host::KernelSettings& kernelSettings);

/// Arguments: a variable's name and its new value as text, which is read by the type of the present value; without one,
/// as data if it looks like that, else as a text. A machine without firmware variables is left alone, with success.
/// What the firmware refuses is error 9.
ErrorOrNil modifyNvram(const Array& arguments, host::FirmwareVariables& firmwareVariables);

/// Arguments: key, application ("NSGlobalDomain" for all), user, host (for those two also the texts
/// "kCFPreferencesAnyUser" and the like), and the value as the text of a property list; an empty one removes the key.
/// A text that can't be read is POSIX error 22 with the reader's error underneath. What can't be stored is error 10.
ErrorOrNil modifyPreferences(const Array& arguments, host::Preferences& preferences);

/// Arguments: client name, configuration (empty for the default one), key, and the value as the text of a property
/// list; an empty one removes the key. POSIX error 22 as for preferences; a configuration that can't be locked is POSIX
/// error 16; everything else is error 11.
ErrorOrNil modifySysconf(const Array& arguments, host::SystemConfiguration& systemConfiguration);

/// Arguments: process identifier and signal, of which the low 32 bits count. Identifiers below 1 are POSIX error 22.
ErrorOrNil signalProcess(const Array& arguments, host::ProcessSignals& processSignals);

/// Arguments: client name, a network service's identifier, and whether its IPv6 is to be on (not zero). A locked
/// configuration is POSIX error 16; everything else is error 10. Of these, what the client can do something about is
/// also told to `sysLog`.
ErrorOrNil enableIpvsix(const Array& arguments, host::SystemConfiguration& systemConfiguration, const Log& sysLog);

/// Arguments, exactly: a device's name below /dev, and the number of 512-byte blocks to be filled with zero bytes from
/// its start. No blocks is success without a look at the device. Failures are POSIX errors; what was written stays
/// written.
ErrorOrNil eraseDiskblocks(const Array& arguments, host::StorageDevices& storageDevices);

}  // namespace vantrell
