// SPDX-License-Identifier: MIT
#include "tests/app/system_bus.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/eventually.h"

namespace hollin {
namespace {

const Subprocess::Setup kSystemDaemon = {
    .command = {"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address"}};
const Subprocess::Setup kLogind = {
    .command = {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"}};

}  // namespace

SystemBus::SystemBus() : daemon(kSystemDaemon) {
  if (!daemon.ReadUntil("\n")) throw std::runtime_error("no bus: " + daemon.Err());
  address = daemon.Out().substr(0, daemon.Out().find('\n'));
  setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
}

// A daemon that is killed leaves its socket behind.
SystemBus::~SystemBus() {
  daemon.Signal(SIGTERM);
  daemon.Wait();
}

void SystemBus::StartLogind() {
  logind.emplace(kLogind);
  if (!Eventually([] { return !Inhibitors().empty(); })) throw std::runtime_error("no logind");
}

std::string SystemBus::Inhibitors() {
  Subprocess tool({.command = {"/usr/bin/dbus-send", "--system", "--print-reply=literal",
                               "--dest=org.freedesktop.login1", "/org/freedesktop/login1",
                               "org.freedesktop.login1.Manager.ListInhibitors"}});
  tool.Wait();
  return tool.Out();
}

bool SystemBus::IsHeldFor(const std::string& reason) {
  return Inhibitors().find(reason) != std::string::npos;
}

}  // namespace hollin
