// A service of static files: what `lirvox publish` writes.
#pragma once

#include <cstddef>
#include <string>

namespace lirvox::catalog {

/// Where a published folder will be served.
struct PublishOptions {
  /// What clients know as the service's base URL; a slash at its end is dropped.
  std::string baseUrl;
  /// The folder in the archive that has the name of the service's host; empty takes the
  /// host of `baseUrl`. It must be what devices were built with.
  std::string hostFolder;
};

/// What was published.
struct Published {
  /// The generation stamp, derived from the content.
  std::string dt;
  /// The archive, below the published folder.
  std::string archive;
  /// False if this generation was there already.
  bool isNew = false;
};

/// Makes `folder` a service when a web server serves it as its root: the reply at
/// "api/last_db_generation.php", the archives of all generations in "archives". The
/// folder is made when missing; older archives stay. The reply is replaced when its
/// archive is there, each as a whole, so that clients may come at any moment. Throws
/// `CatalogError`.
Published publish(const std::string& database, const std::string& folder,
                  const PublishOptions& options);

/// Removes the archives that the reply in `folder` does not name, and returns how many
/// there were. A client that has read an older reply, or that a cache has served one,
/// then finds its archive gone. Throws `CatalogError` when there is no readable reply.
std::size_t prune(const std::string& folder);

}  // namespace lirvox::catalog
