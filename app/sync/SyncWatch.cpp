#include "app/sync/SyncWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "app/Refusal.h"
#include "app/sync/SyncFolder.h"

namespace quillmont {

SyncWatch::SyncWatch(SyncSettings::Configuration configuration) : setup_(std::move(configuration)) {
  folderWatch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (folderWatch_ < 0 ||
      ::inotify_add_watch(folderWatch_, setup_.folder.c_str(),
                          IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE | IN_DELETE_SELF |
                              IN_MOVE_SELF | IN_UNMOUNT) < 0) {
    const int error = errno;
    if (folderWatch_ >= 0) ::close(folderWatch_);
    throw Refusal("cannot watch the sync folder " + setup_.folder.string() + ": " + std::strerror(error));
  }
}

SyncWatch::~SyncWatch() { ::close(folderWatch_); }

bool SyncWatch::waitForChange(const Stop& stop) {
  while (!poll(stop ? 1000 : -1)) {
    if (stop && stop()) return false;
  }
  while (poll(1000)) {
  }
  return true;
}

// Whether a change that matters arrived within `timeout` milliseconds.
bool SyncWatch::poll(int timeout) {
  std::array<pollfd, 2> watched{{{store_.fileDescriptor(), POLLIN, 0}, {folderWatch_, POLLIN, 0}}};
  const int ready = ::poll(watched.data(), watched.size(), timeout);
  if (ready < 0 && errno != EINTR) throw Refusal(std::string("cannot wait for changes: ") + std::strerror(errno));
  bool matters = false;
  if (ready > 0 && (watched[0].revents & POLLIN) != 0) matters = store_.takeRequests() || matters;
  if (ready > 0 && (watched[1].revents & POLLIN) != 0) matters = folderEvents() || matters;
  return matters;
}

// Another device's files matter, and the own ones going away; the own
// files being written do not (that is this exchange's own doing).
bool SyncWatch::folderEvents() {
  bool matters = false;
  alignas(inotify_event) std::array<char, 4096> buffer{};
  while (true) {
    const ssize_t length = ::read(folderWatch_, buffer.data(), buffer.size());
    if (length <= 0) break;
    for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
      if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED)) != 0) {
        // Watching again would watch nothing: end, and let the service
        // manager start again once the folder is back.
        throw Refusal("the sync folder " + setup_.folder.string() + " went away");
      }
      const std::string name = event->len > 0 ? event->name : "";
      if (const auto owner = SyncFolder::deviceOfFileName(name)) {
        const bool gone = (event->mask & (IN_DELETE | IN_MOVED_FROM)) != 0;
        if (*owner != setup_.device || gone) matters = true;
      }
      at += sizeof(inotify_event) + event->len;
    }
  }
  return matters;
}

void SyncWatch::run(const UserDefaults& defaults, const SyncSettings::Configuration& configuration,
                    const Callbacks& callbacks, const Stop& stop) {
  SyncWatch changes(configuration);
  if (callbacks.watching) callbacks.watching();
  do {
    try {
      const auto result = SyncExchange::exchange(defaults, configuration);
      if (callbacks.exchanged) callbacks.exchanged(result);
    } catch (const std::exception& error) {
      if (callbacks.failed) callbacks.failed(error);
    }
  } while (changes.waitForChange(stop));
}

}  // namespace quillmont
