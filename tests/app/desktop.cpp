// SPDX-License-Identifier: MIT
#include "tests/app/desktop.h"

#include <X11/Xlib.h>

#include <csignal>
#include <stdexcept>

namespace hollin {
namespace {

// With -displayfd the server chooses a free number itself and tells it when it is ready. Without
// -noreset it would start afresh, and refuse connections meanwhile, whenever its last client
// leaves.
const Subprocess::Setup kServer = {.command = {"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0",
                                               "1024x768x24", "-noreset", "-nolisten", "tcp"}};

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

void Desktop::Close(const std::string& title) const {
  Display* const connection = XOpenDisplay(display.c_str());
  if (connection == nullptr) throw std::runtime_error("no display");
  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = std::stoul(WindowNamed(title));
  event.xclient.message_type = XInternAtom(connection, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(connection, "WM_DELETE_WINDOW", False));
  XSendEvent(connection, event.xclient.window, False, NoEventMask, &event);
  XCloseDisplay(connection);
}

}  // namespace hollin
