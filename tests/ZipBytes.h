// Zip archives made byte by byte, so that every field can be wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <zlib.h>

namespace lirvox::test {

struct ZipBytesEntry {
  std::string name;
  std::string data{};
  bool deflated = false;
  std::uint32_t mode = 0;
  std::uint16_t flags = 0;
  std::uint32_t dosDate = (46U << 25) | (5U << 21) | (4U << 16) | (3U << 11) | (2U << 5) | 1U;
  std::optional<std::uint32_t> crc{};
  std::optional<std::uint32_t> size{};
  std::optional<std::uint16_t> method{};
  bool zip64 = false;
  /// Has its bytes where the entry before has them.
  bool overlaps = false;
};

inline std::string deflate(const std::string& data) {
  uLongf size = compressBound(static_cast<uLong>(data.size()));
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
           static_cast<uLong>(data.size()));
  return out.substr(2, size - 6);  // without the frame of zlib
}

inline std::string number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>((value >> (8 * i)) & 0xff);
  return text;
}

/// The archive with these entries. The number of entries in the end record can be forged.
inline std::string zipBytes(const std::vector<ZipBytesEntry>& entries,
                            std::optional<std::uint16_t> count = {}) {
  std::string files;
  std::string directory;
  std::size_t start = 0;
  for (const ZipBytesEntry& entry : entries) {
    const std::string packed = entry.deflated ? deflate(entry.data) : entry.data;
    const std::uint64_t size = entry.size.value_or(static_cast<std::uint32_t>(entry.data.size()));
    const auto crc = entry.crc.value_or(
        static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(entry.data.data()),
                                         static_cast<uInt>(entry.data.size()))));
    const std::string extra =
        entry.zip64 ? number(1, 2) + number(16, 2) + number(size, 8) + number(packed.size(), 8)
                    : "";
    const std::uint64_t all = 0xffffffff;
    const std::string common =
        number(entry.flags, 2) + number(entry.method.value_or(entry.deflated ? 8 : 0), 2) +
        number(entry.dosDate, 4) + number(crc, 4) + number(entry.zip64 ? all : packed.size(), 4) +
        number(entry.zip64 ? all : size, 4) + number(entry.name.size(), 2) +
        number(extra.size(), 2);
    if (!entry.overlaps) start = files.size();
    directory += "PK\1\2" + number((3U << 8) | 45U, 2) + number(45, 2) + common + number(0, 6) +
                 number(std::uint64_t{entry.mode} << 16, 4) + number(start, 4) + entry.name + extra;
    if (!entry.overlaps) files += "PK\3\4" + number(45, 2) + common + entry.name + extra + packed;
  }
  const std::uint64_t total = count.value_or(static_cast<std::uint16_t>(entries.size()));
  return files + directory + "PK\5\6" + number(0, 4) + number(total, 2) + number(total, 2) +
         number(directory.size(), 4) + number(files.size(), 4) + number(0, 2);
}

}  // namespace lirvox::test
