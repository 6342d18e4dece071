// Every function of the library with each of its allocations failing in turn: it gives what its header says,
// leaves no block, stream or statement behind, and the caller's own objects are whole.
//
// Links libHostUtil as a library, and replaces glibc's malloc and its family. Only what libHostUtil, libBasic
// and the C++ library on their behalf allocate fails. Other libraries are spared: some of them abort when
// they get no memory.

#include <dlfcn.h>
#include <glog/logging.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include <cstdlib>
#include <new>
#include <string_view>

#include "support/every_function.h"

namespace {

// One call with failing allocations. It belongs to the thread that waits for the call's end, since the hooks
// below still count while the calling thread's own objects go.
struct Trial {
  const LibraryCall* call;
  int at;        // the number, from 1, of the allocation inside the library that fails
  bool onwards;  // whether every later one fails as well
  int seen = 0;
  int blocks = 0;                               // that the thread took and nobody gave back
  std::string outcome = std::string(256, ' ');  // memory from outside the thread
};
constinit thread_local Trial* trial = nullptr;

bool IsOurs(const void* code) {
  Dl_info library;
  const std::string_view file = ::dladdr(code, &library) != 0 ? library.dli_fname : "";
  return file.find("/libHostUtil.") != file.npos || file.find("/libBasic.") != file.npos ||
         file.find("/libstdc++.") != file.npos;
}

// Whether the allocation asked for by the code at `caller` is one to fail.
bool Fails(const void* caller) {
  if (trial == nullptr || !inside_library_call) return false;
  static const void* ours = nullptr;  // dladdr is slow, and nearly always it is operator new that asks
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

// Tries a call on a thread of its own, until after the thread's objects are gone.
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
    Try(call, 0, false);  // what is made once in a process is made now
    for (const bool onwards : {false, true}) {
      bool failed = true;
      for (int at = 1; failed; ++at) {
        SCOPED_TRACE(call.name + (" at allocation " + std::to_string(at)));
        const Trial tried = Try(call, at, onwards);
        failed = tried.seen >= at;
        EXPECT_EQ(tried.blocks, 0);
        EXPECT_THAT(failed ? call.failed : std::vector{call.result}, testing::Contains(tried.outcome));
        EXPECT_TRUE(at > 1 || failed != call.failed.empty()) << "it asks for memory, or for none";
      }
    }
  }
}

}  // namespace

// glibc's own functions, and what stands in for them.
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
