// Calls every function of the library once for each of its allocations, and lets that one fail: the result is
// what the header says, no block, stream or statement leaks, and the caller's objects are unchanged.
//
// Links libHostUtil as a shared library and replaces malloc and its family. Only allocations of libHostUtil,
// of libBasic and of the C++ library on their behalf fail: some other libraries abort without memory.

#include <dlfcn.h>
#include <glog/logging.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include <cstdlib>
#include <new>
#include <string_view>

#include "support/every_function.h"

namespace {

// One call with failing allocations. Owned by the thread that joins the calling one, since the hooks below
// still count while the calling thread's thread-local objects are destroyed.
struct Trial {
  const LibraryCall* call;
  int at;        // the number, from 1, of the allocation inside the library that fails
  bool onwards;  // whether every later one fails too
  int seen = 0;
  int blocks = 0;                               // allocated by the thread and not freed
  std::string outcome = std::string(256, ' ');  // allocated outside the thread, so that it is not counted
};
constinit thread_local Trial* trial = nullptr;

bool IsOurs(const void* code) {
  Dl_info library;
  const std::string_view file = ::dladdr(code, &library) != 0 ? library.dli_fname : "";
  return file.find("/libHostUtil.") != file.npos || file.find("/libBasic.") != file.npos ||
         file.find("/libstdc++.") != file.npos;
}

// Whether the allocation that the code at `caller` asks for has to fail.
bool Fails(const void* caller) {
  if (trial == nullptr || !inside_library_call) return false;
  static const void* ours = nullptr;  // dladdr is slow, and the caller is nearly always operator new
  if (caller != ours && !IsOurs(caller)) return false;
  ours = caller;
  return ++trial->seen == trial->at || (trial->onwards && trial->seen > trial->at);
}

void* Counted(void* block) {
  if (block != nullptr && trial != nullptr) ++trial->blocks;
  return block;
}

void* RunTrial(void* argument) {
  trial = static_cast<Trial*>(argument);
  trial->outcome.clear();
  try {
    trial->outcome += trial->call->call();
  } catch (const std::bad_alloc&) {
    trial->outcome += "bad_alloc";
  }
  return nullptr;
}

// Runs a call on a thread of its own and returns after the thread's objects are destroyed.
Trial Try(const LibraryCall& call, int at, bool onwards) {
  Trial tried{&call, at, onwards};
  pthread_t thread;
  if (::pthread_create(&thread, nullptr, &RunTrial, &tried) != 0) std::abort();
  ::pthread_join(thread, nullptr);
  return tried;
}

TEST(AllocationFailure, OfEachAllocationInTurn) {
  FLAGS_minloglevel = google::NUM_SEVERITIES;
  for (const LibraryCall& call : EveryFunction()) {
    Try(call, 0, false);  // allocates what is allocated once per process
    for (const bool onwards : {false, true}) {
      bool failed = true;
      for (int at = 1; failed; ++at) {
        SCOPED_TRACE(call.name + (" at allocation " + std::to_string(at)));
        const Trial tried = Try(call, at, onwards);
        failed = tried.seen >= at;
        EXPECT_EQ(tried.blocks, 0);
        EXPECT_THAT(failed ? call.failed : std::vector{call.result}, testing::Contains(tried.outcome));
        if (at == 1) {
          EXPECT_EQ(failed, !call.failed.empty()) << "whether the call allocates at all";
        }
      }
    }
  }
}

}  // namespace

// glibc's functions and their replacements.
#pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : Counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : Counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
  if (Fails(__builtin_return_address(0))) return nullptr;
  void* const moved = __libc_realloc(block, size);
  return block == nullptr ? Counted(moved) : moved;
}

void free(void* block) noexcept {
  if (block != nullptr && trial != nullptr) --trial->blocks;
  __libc_free(block);
}

}  // extern "C"
#pragma GCC visibility pop
