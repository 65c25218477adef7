#include "platform/widgets/WidgetReloadWatcher.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <system_error>

#include "platform/foundation/PrivateFiles.h"
#include "platform/widgets/WallClockAlarm.h"
#include "platform/widgets/WidgetCenter.h"

namespace quillmont {
namespace {

[[noreturn]] void failWithErrno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

}  // namespace

WidgetReloadWatcher::WidgetReloadWatcher() {
  PrivateFiles::createFolder(WidgetCenter::signalFolder());  // inotify says why when it failed
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
  std::optional<WallClockAlarm> alarm;
  if (until) alarm.emplace().arm(*until);
  std::array<pollfd, 2> watched{pollfd{inotify_, POLLIN, 0}, pollfd{alarm ? alarm->fileDescriptor() : -1, POLLIN, 0}};
  for (;;) {
    if (::poll(watched.data(), alarm ? 2 : 1, -1) < 0) {
      if (errno == EINTR) continue;
      failWithErrno("waiting for widget reloads");
    }
    if (watched[0].revents != 0 && takeRequests()) return Wake::reloadRequested;
    if (alarm && watched[1].revents != 0) {
      switch (alarm->take()) {
        case WallClockAlarm::Ring::due:
          return Wake::reloadDue;
        case WallClockAlarm::Ring::clockChanged:
          return Wake::clockChanged;
        case WallClockAlarm::Ring::notYet:
          break;
      }
    }
  }
}

}  // namespace quillmont
