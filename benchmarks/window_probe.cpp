// SPDX-License-Identifier: MIT
// Preloaded into a window program, any one: appends to the file that WINDOW_PROBE names
//
//   painted TIME WAITED   when the X server has taken the first picture of a window, and how long
//                         the thread has waited for a processor until then, less what other threads
//                         of the program ran; below 0 where they ran longer
//   busy TIME LENGTH      each time the main thread comes back to its event loop after more than a
//                         millisecond, without the time that it waited for a processor
//
// in nanoseconds, TIME of CLOCK_MONOTONIC. Nothing else of the program changes.
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace {

constexpr int64_t kShortest = 1'000'000;

int64_t lastReturn = 0;
bool isPainted = false;

int64_t TimeOf(clockid_t clock) {
  timespec time = {};
  clock_gettime(clock, &time);
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

int64_t Now() { return TimeOf(CLOCK_MONOTONIC); }

// How long this thread has waited for a processor so far.
int64_t Waited() {
  static const int file = open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
  char text[64] = {};
  long long run = 0;
  long long waited = 0;
  if (pread(file, text, sizeof text - 1, 0) > 0) std::sscanf(text, "%lld %lld", &run, &waited);
  return waited;
}

int64_t OfOtherThreads() {
  return TimeOf(CLOCK_PROCESS_CPUTIME_ID) - TimeOf(CLOCK_THREAD_CPUTIME_ID);
}

// Time that goes by for this thread.
int64_t OwnTime() { return Now() - Waited(); }

void Tell(const char* what, int64_t time, int64_t length) {
  static const char* const path = std::getenv("WINDOW_PROBE");
  static const int file = path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
  if (file < 0) return;
  if (dprintf(file, "%s %lld %lld\n", what, static_cast<long long>(time),
              static_cast<long long>(length)) < 0) {
    std::abort();
  }
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Its answer says that the server has done everything before it.
void AwaitServer(xcb_connection_t* connection) {
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

// libxcb waits for its one socket with poll too; an event loop has more to look at.
bool IsEventLoop(nfds_t count) { return count > 1 && getpid() == gettid(); }

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the libraries' own names.
extern "C" {

xcb_void_cookie_t xcb_shm_put_image(xcb_connection_t* connection, xcb_drawable_t drawable,
                                    xcb_gcontext_t context, uint16_t totalWidth,
                                    uint16_t totalHeight, uint16_t sourceX, uint16_t sourceY,
                                    uint16_t sourceWidth, uint16_t sourceHeight, int16_t x,
                                    int16_t y, uint8_t depth, uint8_t format, uint8_t sendEvent,
                                    xcb_shm_seg_t segment, uint32_t offset) {
  static const auto next = Next<decltype(&xcb_shm_put_image)>("xcb_shm_put_image");
  const xcb_void_cookie_t cookie =
      next(connection, drawable, context, totalWidth, totalHeight, sourceX, sourceY, sourceWidth,
           sourceHeight, x, y, depth, format, sendEvent, segment, offset);
  if (!std::exchange(isPainted, true)) {
    AwaitServer(connection);
    Tell("painted", Now(), Waited() - OfOtherThreads());
  }
  return cookie;
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
  static const auto next = Next<decltype(&poll)>("poll");
  if (!IsEventLoop(count)) return next(descriptors, count, timeout);
  const int64_t length = OwnTime() - lastReturn;
  if (lastReturn != 0 && length > kShortest) Tell("busy", Now(), length);
  const int result = next(descriptors, count, timeout);
  lastReturn = OwnTime();
  return result;
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
