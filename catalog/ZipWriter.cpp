// Writing zip archives, over minizip.
#include "catalog/ZipWriter.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include <minizip/zip.h>

#include "catalog/CatalogError.h"

namespace lirvox::catalog {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunkBytes = std::size_t{1} << 20;
constexpr std::uintmax_t kLargestPlainSize = 0xfffffffe;

// The local date of now; archives know no time zones.
tm_zip dateOfNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  const auto field = [](int value) { return static_cast<uInt>(value); };
  return {field(local.tm_sec),  field(local.tm_min), field(local.tm_hour),
          field(local.tm_mday), field(local.tm_mon), field(local.tm_year + 1900)};
}

}  // namespace

ZipWriter::ZipWriter(const std::string& path) : path_(path) {
  std::error_code error;
  const fs::path folder = fs::absolute(path).parent_path();
  file_ = platform::TemporaryFile::createIn(folder, error);
  if (error) throw CatalogError(path_ + ": " + error.message());
  zip_ = zipOpen64((folder / file_.name()).c_str(), APPEND_STATUS_CREATE);
  if (!zip_) throw CatalogError(path_ + ": cannot be written");
}

ZipWriter::~ZipWriter() {
  if (zip_) zipClose(zip_, nullptr);
}

void ZipWriter::check(int status) {
  if (status != ZIP_OK) throw CatalogError(path_ + ": cannot be written");
}

void ZipWriter::open(const std::string& name, bool large) {
  zip_fileinfo info{};
  info.tmz_date = dateOfNow();
  check(zipOpenNewFileInZip64(zip_, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                              Z_DEFLATED, Z_DEFAULT_COMPRESSION, large ? 1 : 0));
}

void ZipWriter::addFolder(const std::string& name) {
  open(name, false);
  check(zipCloseFileInZip(zip_));
}

void ZipWriter::addFile(const std::string& name, const std::string& source) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(source, error);
  std::ifstream file(source, std::ios::binary);
  if (error || !file) throw CatalogError(source + ": cannot be read");
  open(name, size > kLargestPlainSize);
  std::vector<char> chunk(kChunkBytes);
  std::uintmax_t total = 0;
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())), file.gcount() > 0) {
    check(zipWriteInFileInZip(zip_, chunk.data(), static_cast<unsigned>(file.gcount())));
    total += static_cast<std::uintmax_t>(file.gcount());
  }
  check(zipCloseFileInZip(zip_));
  if (total != size) throw CatalogError(source + ": cannot be read");
}

void ZipWriter::finish() {
  check(zipClose(std::exchange(zip_, nullptr), nullptr));
  if (const auto error = file_.moveTo(fs::path(path_).filename())) {
    throw CatalogError(path_ + ": " + error.message());
  }
}

}  // namespace lirvox::catalog
