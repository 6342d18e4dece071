#include "support/failing_allocations.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "support/every_function.h"

namespace {

// One Run. It belongs to the thread that waits for the run's end, since the hooks below still count while the
// running thread's own objects go.
struct State {
  int at;
  bool onwards;
  const std::function<void()>* work;
  int seen = 0;
  int blocks = 0;
};
constinit thread_local State* state = nullptr;

bool IsOurs(const void* code) {
  Dl_info library;
  const std::string_view file = ::dladdr(code, &library) != 0 ? library.dli_fname : "";
  return file.find("/libHostUtil.") != file.npos || file.find("/libBasic.") != file.npos ||
         file.find("/libstdc++.") != file.npos;
}

// Whether the allocation asked for by the code at `caller` is one to fail.
bool Fails(const void* caller) {
  if (state == nullptr || !inside_library_call) return false;
  static const void* ours = nullptr;  // dladdr is slow, and nearly always it is operator new that asks
  if (caller != ours && !IsOurs(caller)) return false;
  ours = caller;
  return ++state->seen == state->at || (state->onwards && state->seen > state->at);
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
  return {shared.seen >= at, shared.blocks};
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): glibc's own functions, and what
// stands in for them.
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
  if (block != nullptr && state != nullptr) --state->blocks;
  __libc_free(block);
}

}  // extern "C"
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
