// SPDX-License-Identifier: MIT
#include "tests/app/desktop.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <csignal>
#include <stdexcept>

namespace hollin {
namespace {

// With -displayfd the server chooses a free number itself and tells it when it is ready. Without
// -noreset it would start afresh, and refuse connections meanwhile, whenever its last client
// leaves.
const Subprocess::Setup kServer = {.command = {"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0",
                                               "1024x768x24", "-noreset", "-nolisten", "tcp"}};

struct Connection {
  explicit Connection(const std::string& display) : x(XOpenDisplay(display.c_str())) {
    if (x == nullptr) throw std::runtime_error("no display");
  }
  ~Connection() { XCloseDisplay(x); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  Display* x;
};

}  // namespace

Desktop::Desktop() : server(kServer) {
  if (!server.ReadUntil("\n")) throw std::runtime_error("no X server: " + server.Err());
  display = ":" + server.Out().substr(0, server.Out().find('\n'));
}

// A server that is killed leaves its lock behind.
Desktop::~Desktop() {
  server.Signal(SIGTERM);
  server.Wait();
}

void Desktop::Vanish() const { server.Signal(SIGTERM); }

std::string Desktop::Xdotool(const std::vector<std::string>& arguments) const {
  Subprocess::Setup setup = {.command = {"/usr/bin/xdotool"}, .environment = {Environment()}};
  setup.command.insert(setup.command.end(), arguments.begin(), arguments.end());
  Subprocess tool(setup);
  tool.Wait();
  return tool.Out();
}

std::string Desktop::WindowNamed(const std::string& title) const {
  const std::string found = Xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"});
  return found.substr(0, found.find('\n'));
}

void Desktop::Press(const std::string& title, const std::string& key) const {
  static_cast<void>(Xdotool({"windowfocus", "--sync", WindowNamed(title), "key", key}));
}

unsigned long Desktop::CornerColour(const std::string& title) const {
  const Connection connection(display);
  XImage* const image =
      XGetImage(connection.x, std::stoul(WindowNamed(title)), 0, 0, 8, 8, AllPlanes, ZPixmap);
  if (image == nullptr) throw std::runtime_error("no picture");
  const unsigned long colour = XGetPixel(image, 4, 4) & 0xFFFFFF;
  XDestroyImage(image);
  return colour;
}

bool Desktop::HasProperty(const std::string& title, const std::string& property,
                          size_t items) const {
  const Connection connection(display);
  Atom type = None;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(connection.x, std::stoul(WindowNamed(title)),
                     XInternAtom(connection.x, property.c_str(), False), 0, 1 << 20, False,
                     AnyPropertyType, &type, &format, &count, &rest, &data);
  if (data != nullptr) XFree(data);
  return count >= items;
}

void Desktop::Close(const std::string& title) const {
  const Connection connection(display);
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = std::stoul(WindowNamed(title));
  event.xclient.message_type = XInternAtom(connection.x, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(connection.x, "WM_DELETE_WINDOW", False));
  XSendEvent(connection.x, event.xclient.window, False, NoEventMask, &event);
}

}  // namespace hollin
