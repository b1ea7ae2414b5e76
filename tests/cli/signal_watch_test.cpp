// SPDX-License-Identifier: MIT
#include "cli/signal_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/eventually.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;

// What the watching thread has done, for another thread to wait for.
class Events {
 public:
  void Add(const std::string& event) {
    const std::lock_guard lock(mutex);
    all.push_back(event);
    added.notify_all();
  }
  std::vector<std::string> WaitForCount(size_t count) {
    std::unique_lock lock(mutex);
    added.wait(lock, [&] { return all.size() >= count; });
    return all;
  }
  bool Has(const std::string& event) {
    const std::lock_guard lock(mutex);
    return std::find(all.begin(), all.end(), event) != all.end();
  }

 private:
  std::mutex mutex;
  std::condition_variable added;
  std::vector<std::string> all;
};

class SignalWatchTest : public ::testing::Test {
 protected:
  SignalWatch::Actions Actions(std::chrono::milliseconds tickInterval = std::chrono::hours(1)) {
    return {.first = [this] { events.Add("first"); },
            .second = [this] { events.Add("second"); },
            .leave = [this] { events.Add("leave"); },
            .tick = [this] { events.Add("tick"); },
            .tickInterval = tickInterval};
  }

  // To the process, as a terminal sends it; and waits until it was handled.
  std::vector<std::string> Send(int signal) {
    sent++;
    kill(getpid(), signal);
    return events.WaitForCount(sent);
  }

  Events events;
  size_t sent = 0;
};

TEST_F(SignalWatchTest, CtrlCAdvisesThenStopsThenLeaves) {
  HoldBackSignals();
  const SignalWatch watch(Actions());
  EXPECT_FALSE(watch.IsStopWanted());
  EXPECT_THAT(Send(SIGINT), ElementsAre("first"));
  EXPECT_FALSE(watch.IsStopWanted());
  EXPECT_THAT(Send(SIGINT), ElementsAre("first", "second"));
  EXPECT_TRUE(watch.IsStopWanted());
  EXPECT_THAT(Send(SIGINT), ElementsAre("first", "second", "leave"));
}

// As where a message finds no memory.
TEST_F(SignalWatchTest, AnActionThatThrowsEndsNothing) {
  HoldBackSignals();
  SignalWatch::Actions actions = Actions(std::chrono::milliseconds(1));
  const auto throwing = [this](const std::string& event) {
    return [this, event] {
      events.Add(event);
      throw std::bad_alloc();
    };
  };
  actions.first = throwing("first");
  actions.tick = throwing("tick");
  const SignalWatch watch(std::move(actions));
  events.WaitForCount(2);
  kill(getpid(), SIGINT);
  EXPECT_TRUE(Eventually([this] { return events.Has("first"); }));
  kill(getpid(), SIGINT);
  EXPECT_TRUE(Eventually([this] { return events.Has("second"); }));
}

TEST_F(SignalWatchTest, ASignalThatAsksToEndLeavesAtOnce) {
  HoldBackSignals();
  const SignalWatch watch(Actions());
  EXPECT_THAT(Send(SIGTERM), ElementsAre("leave"));
  EXPECT_THAT(Send(SIGHUP), ElementsAre("leave", "leave"));
}

TEST_F(SignalWatchTest, EverySignalThatWouldEndTheProgramLeaves) {
  HoldBackSignals();
  const SignalWatch watch(Actions());
  for (const int signal : {SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGVTALRM, SIGPROF, SIGUSR2, SIGPOLL,
                           SIGSTKFLT, SIGPWR, SIGXCPU, SIGRTMIN, SIGRTMAX}) {
    EXPECT_EQ(Send(signal).back(), "leave") << signal;
  }
}

TEST_F(SignalWatchTest, ASignalThatWasHeldBackIsHandledLater) {
  HoldBackSignals();
  kill(getpid(), SIGINT);
  const SignalWatch watch(Actions());
  EXPECT_THAT(events.WaitForCount(1), ElementsAre("first"));
}

TEST_F(SignalWatchTest, ASignalThatIsHeldBackCanBeAskedFor) {
  HoldBackSignals();
  EXPECT_FALSE(IsSignalHeldBack());
  kill(getpid(), SIGUSR1);  // wakes the watch up and asks nobody to end
  EXPECT_FALSE(IsSignalHeldBack());
  kill(getpid(), SIGINT);
  EXPECT_TRUE(IsSignalHeldBack());
  const SignalWatch watch(Actions());
  events.WaitForCount(1);
  EXPECT_FALSE(IsSignalHeldBack());
}

TEST_F(SignalWatchTest, IgnoredSignalsStayIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  HoldBackSignals();
  const SignalWatch watch(Actions());
  kill(getpid(), SIGHUP);
  EXPECT_THAT(Send(SIGINT), ElementsAre("first"));
}

TEST_F(SignalWatchTest, TicksWhileNothingArrives) {
  HoldBackSignals();
  const SignalWatch watch(Actions(std::chrono::milliseconds(1)));
  EXPECT_THAT(events.WaitForCount(2), ::testing::Each("tick"));
}

TEST_F(SignalWatchTest, EndsAtOnceWhenItIsNotNeededAnyMore) {
  HoldBackSignals();
  { const SignalWatch watch(Actions()); }
  EXPECT_THAT(events.WaitForCount(0), ElementsAre());
}

TEST_F(SignalWatchTest, TheWakeUpFromOutsideIsNoInterrupt) {
  HoldBackSignals();
  const SignalWatch watch(Actions());
  kill(getpid(), SIGUSR1);
  EXPECT_THAT(Send(SIGINT), ElementsAre("first"));
}

}  // namespace
}  // namespace hollin
