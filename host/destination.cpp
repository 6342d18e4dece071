#include "destination.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "backup_folder.h"
#include "common/utils.h"
#include "failure.h"

namespace {

[[noreturn]] void FailWithError(const std::string& path) {
  throw Failure(path + ": " + std::strerror(errno));
}

// Removes the first part of the path `rest`, with the "/" after it, and returns it.
std::string TakePart(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('/'), rest.size());
  std::string part(rest.substr(0, end));
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

bool IsName(std::string_view part) {
  return !part.empty() && part != "." && part != "..";
}

// Whether `folder`, which ends with "/", is `root` or below it, by whatever links it is reached.
bool IsInside(const std::string& folder, const std::string& root) {
  struct stat outer {
  }, at{};
  if (::stat(root.c_str(), &outer) != 0) FailWithError(root);
  const auto same = [](const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
  };
  if (::stat(folder.c_str(), &at) != 0) FailWithError(folder);
  for (std::string up = folder + "../";; up += "../") {
    if (same(at, outer)) return true;
    struct stat above {};
    if (::stat(up.c_str(), &above) != 0) FailWithError(up);
    if (same(above, at)) return false;  // the system's root
    at = above;
  }
}

// The result for an error of the system. Throws Failure for one that is no fault of the name.
Destination::Result ResultOf(int error, const std::string& path) {
  switch (error) {
    case ENAMETOOLONG:
    case EILSEQ:
    case EINVAL:
      return Destination::Result::UnsafePath;
    case EEXIST:
    case ENOTDIR:
    case ELOOP:
      return Destination::Result::Conflict;
    default:
      errno = error;
      FailWithError(path);
  }
}

}  // namespace

class DestinationFolder final : public Destination {
 public:
  DestinationFolder(std::string path, Descriptor root) : path_(std::move(path)), root_(std::move(root)) {}

  Result MakeFolder(const std::string& name) override {
    int folder = -1;
    return OpenFolder(name, folder);
  }

  Result MakeFile(const std::string& name, NewFile& file) override {
    const std::size_t slash = name.rfind('/');
    const Result result = OpenFolder(name.substr(0, slash), file.folder_);
    if (result != Result::Made) return result;
    file.path_ = PathOf(name);
    std::string last = name.substr(slash + 1);
    file.file_ = Descriptor(
        ::openat(file.folder_, last.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file.file_.IsOpen()) return ResultOf(errno, file.path_);
    file.name_ = std::move(last);
    return Result::Made;
  }

 private:
  std::string PathOf(const std::string& name) const { return path_ + '/' + name; }

  // Opens the folder `part` of the folder `above`, made when it is missing.
  static Descriptor OpenPart(int above, const std::string& part) {
    const auto open = [&] {
      return ::openat(above, part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    };
    const int folder = open();
    if (folder >= 0 || errno != ENOENT) return Descriptor(folder);
    if (::mkdirat(above, part.c_str(), 0777) != 0 && errno != EEXIST) return {};
    return Descriptor(open());
  }

  // Sets `folder` to a descriptor that is open until the next call.
  Result OpenFolder(const std::string& name, int& folder) {
    if (const auto found = folders_.find(name); found != folders_.end()) {
      folder = found->second.get();
      return Result::Made;
    }
    Descriptor at;
    for (std::string_view rest = name; !rest.empty();) {
      at = OpenPart(at.IsOpen() ? at.get() : root_.get(), TakePart(rest));
      if (!at.IsOpen()) return ResultOf(errno, PathOf(name));
    }
    if (folders_.size() == kMostOpen) folders_.clear();
    folder = at.get();
    folders_.emplace(name, std::move(at));
    return Result::Made;
  }

  static constexpr std::size_t kMostOpen = 64;  // some systems allow a process 256 descriptors

  std::string path_;
  Descriptor root_;
  std::unordered_map<std::string, Descriptor>
      folders_;  // a manifest returns to a few folders again and again
};

namespace {

// A destination of which only the names exist.
class DryRunDestination final : public Destination {
 public:
  explicit DryRunDestination(std::size_t longest_name) : longest_name_(longest_name) {}

  Result MakeFolder(const std::string& name) override { return Make(name, false); }
  Result MakeFile(const std::string& name, NewFile& /*file*/) override { return Make(name, true); }

 private:
  Result Make(const std::string& name, bool is_file) {
    std::uint64_t folder = 0;
    for (std::string_view rest = name; !rest.empty();) {
      const std::string part = TakePart(rest);
      if (part.size() > longest_name_) return Result::UnsafePath;
      const bool makes_file = is_file && rest.empty();
      const std::uint64_t number = makes_file ? kFile : names_.size() + 1;
      const auto [place, is_new] = names_.try_emplace(std::to_string(folder) + '/' + part, number);
      if (!is_new && (makes_file || place->second == kFile)) return Result::Conflict;
      folder = place->second;
    }
    return Result::Made;
  }

  static constexpr std::uint64_t kFile = UINT64_MAX;

  std::size_t longest_name_;
  // The number of each folder, by the number of the one above and its name. The destination itself is 0.
  std::unordered_map<std::string, std::uint64_t> names_;
};

}  // namespace

NewFile::~NewFile() {
  if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
}

void NewFile::Fail() const {
  FailWithError(path_);
}

void NewFile::Write(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(file_.get(), bytes, count);
    if (written < 0) Fail();
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

void NewFile::SetTime(long modified) {
  const std::array<timespec, 2> times = {{{0, UTIME_OMIT}, {modified, 0}}};
  if (::futimens(file_.get(), times.data()) != 0) Fail();
}

void NewFile::Finish() {
  if (!file_.Close()) Fail();
  name_.clear();
}

std::unique_ptr<Destination> OpenDestination(const std::string& path, const std::string& root, bool dry_run) {
  std::string folder = WithSeparator(path);
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  struct stat status {};
  const bool exists = ::lstat(folder.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) FailWithError(path);
  const std::string parent = Utils::GetParentDir(folder.c_str());
  const std::string existing = exists ? folder + '/' : parent.empty() ? "./" : parent;
  if (IsInside(existing, WithSeparator(root))) throw Failure(path + ": is inside the backup");
  std::error_code error;
  if (exists && !std::filesystem::is_empty(existing, error)) {
    throw Failure(path + ": " + (error ? error.message() : "is not empty"));
  }
  if (::access(existing.c_str(), W_OK | X_OK) != 0) FailWithError(path);
  if (dry_run) {
    constexpr long kUsual = 255;
    const long longest = ::pathconf(existing.c_str(), _PC_NAME_MAX);
    return std::make_unique<DryRunDestination>(static_cast<std::size_t>(longest > 0 ? longest : kUsual));
  }
  if (!exists && ::mkdir(folder.c_str(), 0777) != 0) FailWithError(path);
  Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (exists ? 0 : O_NOFOLLOW)));
  if (!opened.IsOpen()) FailWithError(path);
  return std::make_unique<DestinationFolder>(folder, std::move(opened));
}

std::optional<std::string> NameBelow(const std::string& domain, const std::string& path) {
  if (!IsName(domain) || domain.find('/') != std::string::npos) return std::nullopt;
  if (path.empty()) return domain;
  if (path.back() == '/') return std::nullopt;
  for (std::string_view rest = path; !rest.empty();) {
    if (!IsName(TakePart(rest))) return std::nullopt;
  }
  return domain + '/' + path;
}
