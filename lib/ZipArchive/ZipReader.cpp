// Reading a zip archive entry by entry, over minizip.
#include "lib/ZipArchive/ZipReader.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <minizip/unzip.h>
#include <sys/stat.h>

namespace lirvox {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 16;
constexpr std::size_t kLongestField = 0xffff;
// An entry's 32-bit size field that refers to its zip64 field.
constexpr std::uint64_t kSizeElsewhere = 0xffffffff;

// minizip's opening callback. The other callbacks are minizip's own: they take a FILE.
voidpf openDescriptor(voidpf opaque, const void*, int) {
  platform::FileDescriptor own(::fcntl(*static_cast<int*>(opaque), F_DUPFD_CLOEXEC, 0));
  std::FILE* const stream = ::fdopen(own.get(), "rb");
  if (stream) own.release();
  return stream;
}

// Dates in archives are local times. Normalising would hide that one does not exist.
std::optional<std::time_t> localTime(const tm_unz& date) {
  std::tm time{};
  time.tm_year = static_cast<int>(date.tm_year) - 1900;
  time.tm_mon = static_cast<int>(date.tm_mon);
  time.tm_mday = static_cast<int>(date.tm_mday);
  time.tm_hour = static_cast<int>(date.tm_hour);
  time.tm_min = static_cast<int>(date.tm_min);
  time.tm_sec = static_cast<int>(date.tm_sec);
  time.tm_isdst = -1;
  const std::tm asked = time;
  const std::time_t seconds = std::mktime(&time);
  const bool exists = time.tm_mon == asked.tm_mon && time.tm_mday == asked.tm_mday;
  return exists ? std::optional(seconds) : std::nullopt;
}

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    value = value << 8U | static_cast<unsigned char>(*byte);
  }
  return value;
}

// Replaces sizes that refer to the zip64 field (number 1), which holds those that do
// so in this order. Debian's minizip 1.1 takes the reference for a size.
void resolveSizes(std::string_view fields, ZipEntry& entry) {
  while (fields.size() >= 4) {
    const std::uint64_t id = littleEndian(fields.substr(0, 2));
    const std::uint64_t length = littleEndian(fields.substr(2, 2));
    fields.remove_prefix(4);
    if (length > fields.size()) return;
    std::string_view field = fields.substr(0, static_cast<std::size_t>(length));
    fields.remove_prefix(field.size());
    if (id != 1) continue;
    for (std::uint64_t* const size : {&entry.size, &entry.packedSize}) {
      if (*size != kSizeElsewhere || field.size() < 8) continue;
      *size = littleEndian(field.substr(0, 8));
      field.remove_prefix(8);
    }
  }
}

}  // namespace

LirvoxError zipError(ZipErrorCode code, const std::string& description) {
  return {"SSZipArchiveErrorDomain", static_cast<std::int32_t>(code), description};
}

std::unique_ptr<ZipReader> ZipReader::open(platform::FileDescriptor archive) {
  struct stat status {};
  if (!archive || ::fstat(archive.get(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
  zlib_filefunc64_def callbacks{};
  fill_fopen64_filefunc(&callbacks);
  callbacks.zopen64_file = openDescriptor;
  int descriptor = archive.get();
  callbacks.opaque = &descriptor;
  Handle handle(unzOpen2_64("", &callbacks));
  if (!handle) return nullptr;
  return std::unique_ptr<ZipReader>(new ZipReader(std::move(archive), std::move(handle),
                                                  static_cast<std::uint64_t>(status.st_size)));
}

void ZipReader::Close::operator()(void* handle) const {
  unzClose(handle);
}

ZipReader::Step ZipReader::step(int status) {
  if (status == UNZ_OK) return Step::kEntry;
  return status == UNZ_END_OF_LIST_OF_FILE ? Step::kEnd : Step::kDamaged;
}

ZipReader::Step ZipReader::first() {
  return step(unzGoToFirstFile(handle_.get()));
}

ZipReader::Step ZipReader::next() {
  return step(unzGoToNextFile(handle_.get()));
}

std::optional<ZipEntry> ZipReader::entry() {
  unz_file_info64 info{};
  std::vector<char> name(kLongestField + 1);
  std::vector<char> extra(kLongestField);
  if (unzGetCurrentFileInfo64(handle_.get(), &info, name.data(), static_cast<uLong>(name.size()),
                              extra.data(), static_cast<uLong>(extra.size()), nullptr,
                              0) != UNZ_OK) {
    return std::nullopt;
  }
  ZipEntry entry;
  entry.name.assign(name.data(), info.size_filename);
  entry.size = info.uncompressed_size;
  entry.packedSize = info.compressed_size;
  resolveSizes({extra.data(), info.size_file_extra}, entry);
  entry.checksum = static_cast<std::uint32_t>(info.crc);
  entry.method = static_cast<std::uint32_t>(info.compression_method);
  entry.encrypted = (info.flag & 1U) != 0;
  entry.mode = static_cast<std::uint32_t>(info.external_fa >> 16U) & 0xffffU;
  entry.modified = localTime(info.tmu_date);
  return entry;
}

// minizip finds the packed bytes; they are read and expanded here, because it does
// not know where they end when the size is in the zip64 field.
bool ZipReader::read(const ZipEntry& entry, const EntryDecoder::Sink& sink) {
  int method = 0;
  int level = 0;
  constexpr int kRaw = 1;
  if (unzOpenCurrentFile2(handle_.get(), &method, &level, kRaw) != UNZ_OK) return false;
  auto position = static_cast<off_t>(unzGetCurrentFileZStreamPos64(handle_.get()));
  unzCloseCurrentFile(handle_.get());

  EntryDecoder decoder(entry.method, entry.size, sink);
  std::vector<char> packed(kReadBytes);
  std::uint64_t left = entry.packedSize;
  while (!decoder.ended()) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, packed.size()));
    const ssize_t count = ::pread(archive_.get(), packed.data(), wanted, position);
    if (count <= 0) return false;
    if (!decoder.feed({packed.data(), static_cast<std::size_t>(count)})) return false;
    position += count;
    left -= static_cast<std::uint64_t>(count);
  }
  return decoder.matches(entry.checksum);
}

}  // namespace lirvox
