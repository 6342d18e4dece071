#include "support/failing_allocations.h"

#include <link.h>
#include <pthread.h>
#include <unwind.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

#include "support/every_function.h"

namespace {

// One Run. It belongs to the thread that waits for the run's end, since the hooks below still count while the
// running thread's own objects go.
struct State {
  int at;
  bool onwards;
  const std::function<void()>* work;
  int seen = 0;
  int failed = 0;
  int blocks = 0;
};
constinit thread_local State* state = nullptr;

enum class Owner { kOther, kOurs, kStandardLibrary };

// The code of the libraries that matter; the walk below is too frequent for dladdr, which searches for a
// symbol too.
struct Library {
  std::uintptr_t start;
  std::uintptr_t end;
  Owner owner;
};

class Libraries {
 public:
  Libraries() { ::dl_iterate_phdr(&Add, this); }

  Owner OwnerOf(std::uintptr_t address) const {
    for (const Library& library : libraries_) {
      if (address >= library.start && address < library.end) return library.owner;
    }
    return Owner::kOther;
  }

 private:
  static int Add(dl_phdr_info* info, std::size_t /*size*/, void* libraries) {
    const std::string_view file = info->dlpi_name;
    const std::string_view name = file.substr(file.rfind('/') + 1);
    Library library{};
    if (name.starts_with("libHostUtil.") || name.starts_with("libBasic.")) library.owner = Owner::kOurs;
    if (name.starts_with("libstdc++.")) library.owner = Owner::kStandardLibrary;
    if (library.owner == Owner::kOther) return 0;
    for (const ElfW(Phdr) & segment : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
      if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
      library.start = info->dlpi_addr + segment.p_vaddr;
      library.end = library.start + segment.p_memsz;
      static_cast<Libraries*>(libraries)->libraries_.push_back(library);
    }
    return 0;
  }

  std::vector<Library> libraries_;
};

struct Walk {
  const Libraries& libraries;
  std::uintptr_t caller;  // of the hook: where the walk begins to look
  bool begun;
  bool ours;
};

_Unwind_Reason_Code Visit(_Unwind_Context* context, void* argument) {
  auto* const walk = static_cast<Walk*>(argument);
  const std::uintptr_t address = _Unwind_GetIP(context);
  walk->begun = walk->begun || address == walk->caller;
  if (!walk->begun) return _URC_NO_REASON;
  const Owner owner = walk->libraries.OwnerOf(address - 1);  // the call itself, not what follows it
  walk->ours = owner == Owner::kOurs;
  return owner == Owner::kStandardLibrary ? _URC_NO_REASON : _URC_NORMAL_STOP;
}

// Whether the allocation asked for by the code at `caller` is one to fail.
bool Fails(void* caller) {
  if (state == nullptr || !inside_library_call) return false;
  inside_library_call = false;  // the walk itself may allocate
  static const Libraries libraries;
  Walk walk{libraries, reinterpret_cast<std::uintptr_t>(caller), false, false};
  _Unwind_Backtrace(&Visit, &walk);
  inside_library_call = true;
  if (!walk.ours) return false;
  ++state->seen;
  const bool fails = state->seen == state->at || (state->onwards && state->seen > state->at);
  if (fails) ++state->failed;
  return fails;
}

void* Counted(void* block) {
  if (block != nullptr && state != nullptr) ++state->blocks;
  return block;
}

void* RunThread(void* argument) {
  state = static_cast<State*>(argument);
  (*state->work)();
  return nullptr;
}

}  // namespace

FailingAllocations::Report FailingAllocations::Run(int at, bool onwards, const std::function<void()>& work) {
  State shared{at, onwards, &work};
  pthread_t thread;
  if (::pthread_create(&thread, nullptr, &RunThread, &shared) != 0) std::abort();
  ::pthread_join(thread, nullptr);
  return {shared.failed, shared.blocks};
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): glibc's own functions, and what
// stands in for them.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

#define HOOK __attribute__((visibility("default"), noinline))

HOOK void* malloc(std::size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : Counted(__libc_malloc(size));
}

HOOK void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : Counted(__libc_calloc(count, size));
}

HOOK void* realloc(void* block, std::size_t size) noexcept {
  if (Fails(__builtin_return_address(0))) return nullptr;
  void* const moved = __libc_realloc(block, size);
  return block == nullptr ? Counted(moved) : moved;
}

HOOK void free(void* block) noexcept {
  if (block != nullptr && state != nullptr) --state->blocks;
  __libc_free(block);
}

#undef HOOK

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
