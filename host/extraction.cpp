#include "extraction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "common/utils.h"
#include "destination.h"
#include "encryption.h"
#include "manifest.h"
#include "platform/file_copy.h"
#include "progress.h"
#include "signals.h"

namespace {

constexpr std::size_t kBuffer = 128 << 10;     // bytes; a smaller file is read and written at once
constexpr std::size_t kLargestStep = 8 << 20;  // bytes between two looks at signals and progress

class Extraction {
 public:
  Extraction(const ExtractOptions& options, Selection& selection)
      : options_(options), selection_(selection), folder_(options.root), files_(folder_), buffer_(kBuffer) {
    RefuseEncrypted(folder_);
    if (progress_.IsShown()) total_ = TotalBytes();
    manifest_ = OpenManifest(folder_);
    destination_ = OpenDestination(options.destination, options.root, options.dry_run);
  }

  Extracted Run() {
    for (Entry entry;;) {
      const Manifest::Next next = manifest_->Read(entry);
      if (next == Manifest::Next::End) break;
      if (next == Manifest::Next::Truncated) result_.truncated = true;
      if (next != Manifest::Next::Entry) {
        AddProblem(ProblemKind::DamagedRecord, entry.id, entry);
      } else if (selection_.Includes(entry)) {
        Take(entry);
      }
      Step(0);
    }
    result_.elapsed = progress_.Elapsed();
    return std::move(result_);
  }

 private:
  // The bytes of the files that are to be copied, as far as they are recorded.
  std::uint64_t TotalBytes() const {
    Selection selection = selection_;  // what it omits is counted once
    const std::unique_ptr<Manifest> manifest = OpenManifest(folder_);
    std::uint64_t total = 0;
    for (Entry entry; selection.Next(*manifest, entry);) {
      Interruption::Check();
      if (entry.kind == EntryKind::File) total += entry.size.value_or(0);
    }
    return total;
  }

  void Take(const Entry& entry) {
    if (entry.kind == EntryKind::Link) {
      ++result_.links;
      return;
    }
    const std::string id = Utils::CalcFileID(entry.domain.c_str(), entry.path.c_str());
    const std::optional<std::string> name = NameBelow(entry.domain, entry.path);
    const bool is_file = entry.kind == EntryKind::File;
    bool is_copied = false;
    if (!name || (is_file && entry.path.empty())) {
      AddProblem(ProblemKind::UnsafePath, id, entry);
    } else if (is_file) {
      is_copied = TakeFile(entry, id, *name);
    } else if (IsMade(destination_->MakeFolder(*name), id, entry)) {
      ++result_.folders;
    }
    if (is_file && !is_copied) skipped_ += entry.size.value_or(0);
  }

  bool TakeFile(const Entry& entry, const std::string& id, const std::string& name) {
    const std::string place = folder_.StoredPath(id);
    const FileStatus status = files_.StatusOf(place);
    if (status.kind != FileKind::Regular) {
      const bool unreadable = status.kind == FileKind::Unreadable;
      AddProblem(unreadable ? ProblemKind::Unreadable : ProblemKind::Missing, id, entry);
      return false;
    }
    const Descriptor stored(::open(place.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!stored.IsOpen()) {
      AddProblem(ProblemKind::Unreadable, id, entry);
      return false;
    }
    if (entry.size && *entry.size != status.size) AddProblem(ProblemKind::WrongSize, id, entry);
    NewFile file;
    if (!IsMade(destination_->MakeFile(name, file), id, entry)) return false;
    if (!options_.dry_run) {
      if (!Copy(stored.get(), status.size, file)) {
        AddProblem(ProblemKind::Unreadable, id, entry);
        return false;
      }
      if (entry.modified) file.SetTime(*entry.modified);
      file.Finish();
    }
    ++result_.files;
    result_.bytes += status.size;
    return true;
  }

  // Adds the problem of a name that could not be made.
  bool IsMade(Destination::Result result, const std::string& id, const Entry& entry) {
    if (result == Destination::Result::Made) return true;
    const bool conflict = result == Destination::Result::Conflict;
    AddProblem(conflict ? ProblemKind::Conflict : ProblemKind::UnsafePath, id, entry);
    return false;
  }

  // Copies `size` bytes. False when they cannot be read.
  bool Copy(int stored, std::uint64_t size, NewFile& file) {
    if (size > kBuffer && Platform::CloneFile(stored, file.descriptor())) return true;
    std::uint64_t copied = size > kBuffer ? CopyWithinSystem(stored, size, file) : 0;
    while (copied < size) {
      const ssize_t count = ::read(stored, buffer_.data(), buffer_.size());
      if (count <= 0) return false;
      file.Write(buffer_.data(), static_cast<std::size_t>(count));
      copied += static_cast<std::uint64_t>(count);
      Step(copied);
    }
    return true;
  }

  // The number of bytes copied. Not all when the system cannot do it or there is an error: reading and
  // writing then shows which of the two files has it.
  std::uint64_t CopyWithinSystem(int stored, std::uint64_t size, const NewFile& file) {
    std::uint64_t copied = 0;
    while (copied < size) {
      const std::size_t count = Platform::CopyRange(stored, file.descriptor(), kLargestStep);
      if (count == 0) break;
      copied += count;
      Step(copied);
    }
    return copied;
  }

  // Looks at signals and progress, after `copied` bytes of a file.
  void Step(std::uint64_t copied) {
    Interruption::Check();
    progress_.AdvanceBytes(result_.bytes + skipped_ + copied, total_);
  }

  void AddProblem(ProblemKind kind, const std::string& id, const Entry& entry) {
    result_.problems.Add({kind, id, entry.domain, entry.path});
  }

  const ExtractOptions& options_;
  Progress progress_;
  Selection& selection_;
  BackupFolder folder_;
  StoredFiles files_;
  std::unique_ptr<Manifest> manifest_;
  std::unique_ptr<Destination> destination_;
  std::vector<char> buffer_;
  // For progress only, in bytes as recorded.
  std::uint64_t total_ = 0;
  std::uint64_t skipped_ = 0;  // of files that could not be copied
  Extracted result_;
};

}  // namespace

Extracted Extract(const ExtractOptions& options, Selection& selection) {
  return Extraction(options, selection).Run();
}
