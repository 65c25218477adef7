#include "platform/widgets/WidgetReloadWatcher.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <system_error>

#include "platform/widgets/WidgetCenter.h"

namespace quillmont {
namespace {

[[noreturn]] void failWithErrno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

// A wall-clock timer for `until`, cancelled when the clock is set.
int armTimer(Date until) {
  const int timer = ::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  if (timer < 0) failWithErrno("creating a timer");
  const double since1970 = until.timeIntervalSince1970();
  double whole = 0;
  const double fraction = std::modf(since1970, &whole);
  itimerspec deadline{};
  deadline.it_value.tv_sec = static_cast<time_t>(whole);
  deadline.it_value.tv_nsec = static_cast<long>(fraction * 1e9);
  if (deadline.it_value.tv_sec <= 0 && deadline.it_value.tv_nsec <= 0) deadline.it_value.tv_nsec = 1;
  if (::timerfd_settime(timer, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &deadline, nullptr) != 0) {
    const int saved = errno;
    ::close(timer);
    errno = saved;
    failWithErrno("arming a timer");
  }
  return timer;
}

}  // namespace

WidgetReloadWatcher::WidgetReloadWatcher() {
  std::error_code error;
  std::filesystem::create_directories(WidgetCenter::signalFolder(), error);
  inotify_ = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  if (inotify_ < 0) failWithErrno("watching for widget reloads");
  if (::inotify_add_watch(inotify_, WidgetCenter::signalFolder().c_str(), IN_MOVED_TO | IN_CLOSE_WRITE) < 0) {
    const int saved = errno;
    ::close(inotify_);
    errno = saved;
    failWithErrno("watching for widget reloads");
  }
}

WidgetReloadWatcher::~WidgetReloadWatcher() {
  if (inotify_ >= 0) ::close(inotify_);
}

bool WidgetReloadWatcher::takeRequests() {
  alignas(inotify_event) std::array<char, 4096> buffer;
  const auto signalName = WidgetCenter::signalFile().filename().string();
  bool requested = false;
  for (;;) {
    const ssize_t count = ::read(inotify_, buffer.data(), buffer.size());
    if (count <= 0) break;  // EAGAIN: nothing more now
    for (ssize_t offset = 0; offset < count;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
      if (event->len > 0 && signalName == event->name) requested = true;
      if (event->mask & IN_Q_OVERFLOW) requested = true;
      offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
  }
  return requested;
}

WidgetReloadWatcher::Wake WidgetReloadWatcher::wait(std::optional<Date> until) {
  if (takeRequests()) return Wake::reloadRequested;
  if (until && *until <= Date::now()) return Wake::reloadDue;
  const int timer = until ? armTimer(*until) : -1;
  std::array<pollfd, 2> watched{pollfd{inotify_, POLLIN, 0}, pollfd{timer, POLLIN, 0}};
  const nfds_t count = timer >= 0 ? 2 : 1;
  for (;;) {
    if (::poll(watched.data(), count, -1) < 0) {
      if (errno == EINTR) continue;
      const int saved = errno;
      if (timer >= 0) ::close(timer);
      errno = saved;
      failWithErrno("waiting for widget reloads");
    }
    if (watched[0].revents != 0 && takeRequests()) {
      if (timer >= 0) ::close(timer);
      return Wake::reloadRequested;
    }
    if (timer >= 0 && watched[1].revents != 0) {
      std::uint64_t expirations = 0;
      const ssize_t read = ::read(timer, &expirations, sizeof expirations);
      const bool cancelled = read < 0 && errno == ECANCELED;
      ::close(timer);
      return cancelled ? Wake::clockChanged : Wake::reloadDue;
    }
  }
}

}  // namespace quillmont
