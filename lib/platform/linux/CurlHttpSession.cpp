// HTTP requests with libcurl.
#include "lib/platform/linux/CurlHttpSession.h"

#include <cstdint>
#include <filesystem>
#include <utility>

#include "lib/platform/TemporaryFile.h"
#include "lib/platform/linux/CurlLoop.h"
#include "lib/platform/linux/CurlTransfer.h"

namespace lirvox::platform {
namespace {

constexpr std::size_t kLargestData = std::size_t{16} << 20;

// A download on its way to its completion. The file goes with the last owner.
struct DownloadFile {
  DownloadFile(std::string inFolder, std::uint64_t largest)
      : folder(std::move(inFolder)), bytesLeft(largest) {}

  std::error_code append(std::string_view bytes) {
    if (bytes.size() > bytesLeft) return std::make_error_code(std::errc::file_too_large);
    bytesLeft -= bytes.size();
    std::error_code error;
    if (!file) {
      std::filesystem::create_directories(folder, error);
      file = TemporaryFile::createIn(folder, error);
    }
    return error ? error : file.append(bytes);
  }
  std::string path() const { return folder + '/' + file.name(); }

  const std::string folder;
  std::uint64_t bytesLeft;
  TemporaryFile file;
};

}  // namespace

CurlHttpSession::CurlHttpSession(HttpSessionConfiguration configuration,
                                 std::shared_ptr<TaskQueue> queue, std::string temporaryFolder)
    : configuration_(std::move(configuration)),
      queue_(std::move(queue)),
      temporaryFolder_(std::move(temporaryFolder)),
      loop_(std::make_shared<CurlLoop>(configuration_.maximumConnectionsPerHost)) {}

CurlHttpSession::~CurlHttpSession() {
  loop_->stop();
}

void CurlHttpSession::start(std::unique_ptr<CurlTransfer> transfer) {
  if (configuration_.observer) {
    transfer->observe([queue = queue_, observer = configuration_.observer](HttpTaskReport report) {
      queue->async([observer, report = std::move(report)] { observer(report); });
    });
  }
  CurlLoop::add(loop_, std::move(transfer));
}

void CurlHttpSession::startDataTask(const std::string& url, DataCompletion completion) {
  auto body = std::make_shared<std::string>();
  auto sink = [body](std::string_view bytes) {
    const bool fits = bytes.size() <= kLargestData - body->size();
    if (fits) body->append(bytes);
    return fits ? std::error_code() : std::make_error_code(std::errc::file_too_large);
  };
  auto finish = [queue = queue_, body, completion = std::move(completion)](
                    HttpResponse response, std::optional<LirvoxError> error) mutable {
    queue->async([body = std::move(body), completion = std::move(completion), response,
                  error = std::move(error)] { completion(error ? "" : *body, response, error); });
  };
  start(std::make_unique<CurlTransfer>(url, configuration_, std::move(sink), std::move(finish)));
}

void CurlHttpSession::startDownloadTask(const std::string& url, DownloadCompletion completion) {
  auto file =
      std::make_shared<DownloadFile>(temporaryFolder_, configuration_.largestDownloadInBytes);
  auto sink = [file](std::string_view bytes) { return file->append(bytes); };
  auto finish = [queue = queue_, file, completion = std::move(completion)](
                    HttpResponse response, std::optional<LirvoxError> error) mutable {
    // An empty body is a file too.
    const std::error_code noFile = error ? std::error_code() : file->append("");
    if (noFile) error = CurlTransfer::writingError(noFile);
    // At once: a process may end as soon as it has its answer.
    if (error) file->file = TemporaryFile();
    queue->async([file = std::move(file), completion = std::move(completion), response,
                  error = std::move(error)] {
      completion(error ? "" : file->path(), response, error);
      file->file = TemporaryFile();
    });
  };
  start(std::make_unique<CurlTransfer>(url, configuration_, std::move(sink), std::move(finish)));
}

}  // namespace lirvox::platform
