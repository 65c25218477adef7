// quillmont-widget: the time-bank widget on the desktop (see DesktopHost),
// the Quillmont application window (--app, and quillmont:// links), and the
// offscreen rendering of either to PNG.
#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QIcon>
#include <QImage>
#include <QRegularExpression>
#include <QTimer>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "desktop/DesktopAutostart.h"
#include "desktop/DesktopHost.h"
#include "desktop/TrayIcon.h"
#include "desktop/WidgetPainter.h"
#include "desktop/WidgetPalette.h"
#include "desktop/WidgetWindow.h"
#include "desktop/WindowPlacement.h"
#include "desktop/application/PageRendering.h"
#include "desktop/application/QuillmontWindow.h"
#include "platform/foundation/PrivateFiles.h"
#include "platform/foundation/ProcessEntitlements.h"
#include "widget/TimeBankWidget.h"

namespace {

using namespace quillmont;

struct Arguments {
  std::string size;
  std::string instance;
  std::string render;
  double scale = 1;
  bool dark = false;
  std::string open;
  bool app = false;
  std::string link;
  std::vector<std::string> renderPage;
  bool noTray = false;
  std::string autostart;
  bool quitAfterFirstFrame = false;
};

void fail(const std::string& message) { std::cerr << "quillmont-widget: " << message << '\n'; }

// On a Wayland session a program may neither place its window nor keep it
// below others; through XWayland it may. Only when the person chose no
// platform and XWayland is there.
void preferX11ForWidgetWindows() {
  const auto set = [](const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  if (!set("QT_QPA_PLATFORM") && set("WAYLAND_DISPLAY") && set("DISPLAY")) ::setenv("QT_QPA_PLATFORM", "xcb", 1);
}

// Qt's notice that $XDG_RUNTIME_DIR is missing (root shells, CI, containers)
// says nothing a person can act on here; every other message passes.
QtMessageHandler defaultHandler = nullptr;
void filterMessages(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.startsWith("QStandardPaths: XDG_RUNTIME_DIR not set")) return;
  // What the offscreen platform cannot do matters nothing to a picture.
  if (message.startsWith("This plugin does not support")) return;
  if (defaultHandler != nullptr) defaultHandler(type, context, message);
}

int render(const Arguments& arguments, WidgetFamily family) {
  const WidgetConfiguration widget = TimeBankWidget().body();
  const Timeline<RenderedEntry> timeline = widget.timeline(TimelineProviderContext{family, false});
  if (timeline.entries.empty()) {
    fail("the widget gave no entry to draw");
    return 1;
  }
  const QImage image =
      WidgetPainter::render(timeline.entries.front().content, WidgetLayout::sizeOf(family), arguments.scale,
                            arguments.dark ? WidgetPalette::dark() : WidgetPalette::light());
  // Encoded in memory, then written as every file of ours is: private,
  // whole or not at all, and on the disk before we say so.
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, "PNG")) {
    fail("cannot draw " + arguments.render);
    return 1;
  }
  const std::string_view bytes(png.constData(), static_cast<std::size_t>(png.size()));
  if (!PrivateFiles::writeAtomically(arguments.render, bytes)) {
    fail("cannot write " + arguments.render + ": " + std::strerror(errno));
    return 1;
  }
  std::cout << "Drew the " << name(family) << " widget (" << image.width() << " × " << image.height() << ") into "
            << arguments.render << ".\n";
  return 0;
}

// Writes an image as every file of ours is written: private, whole or not
// at all, and on the disk before we say so.
bool writePng(const QImage& image, const std::string& file) {
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, "PNG")) {
    fail("cannot draw " + file);
    return false;
  }
  if (!PrivateFiles::writeAtomically(file, std::string_view(png.constData(), static_cast<std::size_t>(png.size())))) {
    fail("cannot write " + file + ": " + std::strerror(errno));
    return false;
  }
  return true;
}

int renderPage(const Arguments& arguments, AppRoute route, QSize size) {
  const QImage image = PageRendering::render(route, size, arguments.dark);
  if (image.isNull()) {
    fail("cannot draw the page " + std::string(route.rawValue()));
    return 1;
  }
  if (!writePng(image, arguments.renderPage[1])) return 1;
  std::cout << "Drew the " << route.title() << " page (" << image.width() << " × " << image.height() << ") into "
            << arguments.renderPage[1] << ".\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("The Quillmont time-bank widget on the desktop", "quillmont-widget");
  app.set_version_flag("--version", std::string("quillmont-widget ") + QUILLMONT_VERSION);
  Arguments arguments;
  app.add_option("--size", arguments.size,
                 "small or medium (default: the instance's last size, else small); WxH with --render-page "
                 "(default 900x640)")
      ->type_name("SIZE");
  app.add_option("--instance", arguments.instance,
                 "Name of this widget, to run several and remember each one's place (default: its size)")
      ->type_name("NAME");
  app.add_option("--render", arguments.render, "Draw the current widget into a PNG file and exit (no display needed)")
      ->type_name("FILE.png");
  app.add_option("--scale", arguments.scale, "Device pixels per logical pixel for --render (default 1)")
      ->check(CLI::Range(0.5, 8.0))
      ->type_name("N");
  app.add_flag("--dark", arguments.dark, "Draw --render in the dark palette");
  app.add_option("--open", arguments.open,
                 "Open a quillmont:// link in the Quillmont window (in the running widget when there is one)")
      ->type_name("URL");
  app.add_flag("--app", arguments.app,
               "Open the Quillmont window (at LINK's page, else the last one), in the running program when there is one");
  app.add_option("link", arguments.link, "A quillmont:// link for --app (as the desktop's handler passes it)")
      ->type_name("LINK");
  app.add_option("--render-page", arguments.renderPage,
                 "Draw a page of the Quillmont window (overview, history, reports, settings) into a PNG file and exit")
      ->expected(2)
      ->type_name("ROUTE FILE.png");
  app.add_flag("--no-tray", arguments.noTray, "Do not show the tray icon");
  app.add_option("--autostart", arguments.autostart, "enable or disable starting this widget at login")
      ->check(CLI::IsMember({"enable", "disable"}))
      ->type_name("enable|disable");
  app.add_flag("--quit-after-first-frame", arguments.quitAfterFirstFrame,
               "Quit once the widget is drawn for the first time (for measuring start-up)");
  app.footer(
      "Environment:\n  QUILLMONT_HOME  folder for Quillmont's data instead of $XDG_DATA_HOME/quillmont\n\n"
      "Exit status: 0 success, 1 failure, 2 usage error.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    fail(error.what());
    std::cerr << "Run `quillmont-widget --help` for more information.\n";
    return 2;
  }
  if (const auto problem = ProcessEntitlements::overrideProblem()) {
    fail(*problem);
    return 1;
  }

  // --size names a widget size, or a page's size in pixels with --render-page.
  const bool rendersPage = !arguments.renderPage.empty();
  std::optional<AppRoute> pageRoute;
  QSize pageSize(900, 640);
  if (rendersPage) {
    pageRoute = AppRoute::fromRawValue(arguments.renderPage[0]);
    if (!pageRoute) {
      fail("--render-page: '" + arguments.renderPage[0] + "' is not a page (overview, history, reports, settings)");
      return 2;
    }
    if (!arguments.size.empty()) {
      const auto match = QRegularExpression("^([0-9]{2,5})x([0-9]{2,5})$").match(QString::fromStdString(arguments.size));
      if (!match.hasMatch() || match.captured(1).toInt() > 8000 || match.captured(2).toInt() > 8000) {
        fail("--size: give the page's size as WIDTHxHEIGHT, e.g. 900x640");
        return 2;
      }
      pageSize = QSize(match.captured(1).toInt(), match.captured(2).toInt());
      arguments.size.clear();
    }
  } else if (!arguments.size.empty() && arguments.size != "small" && arguments.size != "medium") {
    fail("--size: " + arguments.size + " not in {small,medium}");
    return 2;
  }
  if (!arguments.link.empty() && !arguments.app) {
    fail("a link is opened with --app LINK or --open LINK");
    return 2;
  }

  QString instance = QString::fromStdString(arguments.instance.empty() ? arguments.size : arguments.instance);
  if (!instance.isEmpty() && !WindowPlacement::isValidInstance(instance)) {
    fail("--instance: use letters, digits, '-' and '_' only");
    return 2;
  }
  if (!arguments.autostart.empty()) {
    try {
      std::cout << DesktopAutostart::set(arguments.autostart == "enable", arguments.size, arguments.instance) << '\n';
      return 0;
    } catch (const std::exception& error) {
      fail(error.what());
      return 1;
    }
  }

  const bool renders = !arguments.render.empty();
  if (renders || rendersPage) {
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    if (rendersPage) ::setenv("QT_SCALE_FACTOR", std::to_string(arguments.scale).c_str(), 1);
  } else {
    preferX11ForWidgetWindows();
  }
  defaultHandler = qInstallMessageHandler(filterMessages);
  QApplication application(argc, argv);
  QApplication::setApplicationName("quillmont-widget");
  QApplication::setApplicationDisplayName("Quillmont");
  // The application window belongs to the "Quillmont" launcher, the widget
  // to its own: taskbars and docks group and label the windows by it.
  QApplication::setDesktopFileName(arguments.app || !arguments.open.empty() ? "quillmont" : "quillmont-widget");
  QApplication::setWindowIcon(QIcon::fromTheme("quillmont", TrayIcon::leafIcon()));

  std::optional<WidgetFamily> family;
  if (!arguments.size.empty()) family = widgetFamilyNamed(arguments.size);
  if (instance.isEmpty()) instance = "small";
  const auto placement = WindowPlacement::load(instance);
  if (!family) family = placement ? placement->family : WidgetFamily::systemSmall;

  if (renders) return render(arguments, *family);
  if (rendersPage) return renderPage(arguments, *pageRoute, pageSize);

  if (arguments.app) {
    // The application: the window, in the program already running when
    // there is one (no second process), else here with the tray.
    const QString link = QString::fromStdString(arguments.link);
    if (!link.isEmpty() && !AppRoute::fromURL(arguments.link)) {
      fail("'" + arguments.link + "' is not a Quillmont link (try quillmont://overview)");
      return 2;
    }
    const QString message = link.isEmpty() ? QString(DesktopHost::showMessage) : DesktopHost::openMessagePrefix + link;
    if (SingleInstance::sendToRunning(message)) return 0;
  }
  const bool opensOnly = !arguments.open.empty();
  if (opensOnly && SingleInstance::sendToRunning(DesktopHost::openMessagePrefix + QString::fromStdString(arguments.open))) {
    return 0;
  }
  try {
    DesktopHost host({*family, instance, !opensOnly && !arguments.app, !opensOnly && !arguments.noTray});
    host.listen();
    if (opensOnly) {
      if (!host.openLink(QString::fromStdString(arguments.open))) {
        fail("'" + arguments.open + "' is not a Quillmont link (try quillmont://overview)");
        return 2;
      }
    } else {
      QApplication::setQuitOnLastWindowClosed(false);
      if (arguments.app) {
        if (arguments.link.empty()) host.showMainWindow();
        else host.openLink(QString::fromStdString(arguments.link));
      }
      if (arguments.quitAfterFirstFrame) {
        if (arguments.app) {
          QTimer::singleShot(0, &application, &QCoreApplication::quit);
        } else {
          QObject::connect(host.widgetWindow(), &WidgetWindow::painted, &application, &QCoreApplication::quit,
                           Qt::QueuedConnection);
        }
      }
    }
    return QApplication::exec();
  } catch (const std::exception& error) {
    fail(error.what());
    return 1;
  }
}
