// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileObjectInfo.h"

#include <utility>
#include <vector>

#include "foundation/FileManager.h"
#include "foundation/PathUtilities.h"
#include "foundation/Value.h"

namespace vantrell {

Dictionary fileObjectInfo(const std::string& path, const host::FileStatus& status) {
  // One at a time and in the order of the keys: searches make these by the hundred thousand, and a list of entries
  // would be copied and sorted.
  std::vector<DictionaryEntry> entries;
  entries.reserve(5);
  entries.push_back({"Mode", status.permissions});
  entries.push_back({"ModificationDate", status.modified});
  entries.push_back({"Path", displayablePath(path)});
  entries.push_back({"Size", status.size});
  entries.push_back({"Type", fileTypeText(status.type)});
  return Dictionary::fromEntries(std::move(entries));
}

}  // namespace vantrell
