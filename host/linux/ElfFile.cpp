// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ElfFile.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <ranges>

#include <gelf.h>

#include "foundation/PosixCodes.h"

namespace vantrell::host {

namespace {

struct ElfCloser {
  void operator()(Elf* elf) const noexcept { elf_end(elf); }
};
using ElfHandle = std::unique_ptr<Elf, ElfCloser>;

/// The bytes, or nothing where they lie beyond the file.
std::optional<DataView> bytesAt(DataView file, std::uint64_t offset, std::uint64_t size) noexcept {
  if (offset > file.size() || size > file.size() - offset) return std::nullopt;
  return file.subspan(offset, size);
}

/// Whether the count of section headers stands in the file's header and is not 0. libelf makes room for all sections
/// when it opens a file; 16 bits bound that. Zero is zero in both byte orders.
bool hasPlainSectionCount(DataView file) noexcept {
  const bool wide = file[EI_CLASS] == ELFCLASS64;
  const auto count = bytesAt(file, wide ? offsetof(Elf64_Ehdr, e_shnum) : offsetof(Elf32_Ehdr, e_shnum), 2);
  return count && ((*count)[0] != 0 || (*count)[1] != 0);
}

/// `file` is not written to: libelf changes its image of a file only where it is asked to.
ElfHandle open(DataView file) {
  elf_version(EV_CURRENT);
  auto* image = const_cast<char*>(textOf(file).data());
  ElfHandle elf(elf_memory(image, file.size()));
  if (elf && elf_kind(elf.get()) != ELF_K_ELF) elf.reset();
  return elf;
}

/// The number of section headers, all within the file; nothing where they are not, or have a length of their own.
std::optional<std::size_t> countOfSections(Elf* elf, DataView file) {
  GElf_Ehdr header;
  std::size_t count = 0;
  if (!gelf_getehdr(elf, &header) || elf_getshdrnum(elf, &count) != 0) return std::nullopt;
  const std::size_t size = gelf_fsize(elf, ELF_T_SHDR, 1, EV_CURRENT);
  if (size == 0 || header.e_shentsize != size || !bytesAt(file, header.e_shoff, count * size)) return std::nullopt;
  return count;
}

/// The table that holds the sections' names.
std::optional<std::string_view> nameTable(Elf* elf, DataView file) {
  std::size_t index = 0;
  GElf_Shdr header;
  if (elf_getshdrstrndx(elf, &index) != 0) return std::nullopt;
  Elf_Scn* section = elf_getscn(elf, index);
  if (!section || !gelf_getshdr(section, &header) || header.sh_type != SHT_STRTAB) return std::nullopt;
  const auto contents = bytesAt(file, header.sh_offset, header.sh_size);
  if (!contents) return std::nullopt;
  return textOf(*contents);
}

std::optional<std::string_view> nameAt(std::string_view table, std::size_t offset) {
  if (offset >= table.size()) return std::nullopt;
  const std::string_view rest = table.substr(offset, ElfFile::kMaximumNameLength + 1);
  const std::size_t length = rest.find('\0');
  if (length == std::string_view::npos) return std::nullopt;
  return rest.substr(0, length);
}

std::optional<ElfSection> readSection(const GElf_Shdr& header, std::string_view names, DataView file) {
  const auto name = nameAt(names, header.sh_name);
  if (!name) return std::nullopt;
  ElfSection section{*name, (header.sh_flags & SHF_ALLOC) != 0, header.sh_type != SHT_NOBITS, {}};
  if (section.occupiesFileSpace) {
    const auto contents = bytesAt(file, header.sh_offset, header.sh_size);
    if (!contents) return std::nullopt;
    section.contents = *contents;
  }
  return section;
}

}  // namespace

Result<ElfFile> ElfFile::fromBytes(DataView bytes) {
  if (!textOf(bytes).starts_with(std::string_view(ELFMAG, SELFMAG))) return posixFailure(posix::kWrongFormat);
  if (bytes.size() < EI_NIDENT || !hasPlainSectionCount(bytes)) return posixFailure(posix::kBadMessage);
  const ElfHandle elf = open(bytes);
  if (!elf) return posixFailure(posix::kBadMessage);
  const auto count = countOfSections(elf.get(), bytes);
  const auto names = nameTable(elf.get(), bytes);
  if (!count || !names) return posixFailure(posix::kBadMessage);

  ElfFile file;
  for (std::size_t index = 1; index < *count; ++index) {  // entry 0 is never a section
    GElf_Shdr header;
    Elf_Scn* entry = elf_getscn(elf.get(), index);
    if (!entry || !gelf_getshdr(entry, &header)) return posixFailure(posix::kBadMessage);
    if (header.sh_type == SHT_NULL) continue;
    const auto section = readSection(header, *names, bytes);
    if (!section) return posixFailure(posix::kBadMessage);
    file.sections_.push_back(*section);
  }
  return file;
}

std::optional<DataView> ElfFile::contentsOf(std::string_view name) const noexcept {
  for (const ElfSection& section : std::views::reverse(sections_)) {
    if (section.name == name) return section.contents;
  }
  return std::nullopt;
}

}  // namespace vantrell::host
