// SPDX-License-Identifier: MIT
// A keyboard behind the scripted hidapi that answers each whole message as a good one would, unless
// the case has queued other answers for that command. It keeps no flash and checks nothing: what
// was sent is for the case to look at.
#pragma once

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tests/support/scripted_hidapi.h"

namespace hollin {

class AnsweringKeyboard {
 public:
  using Replies = std::vector<std::optional<Bytes>>;  // nullopt is a read that fails

  explicit AnsweringKeyboard(ScriptedHidapi& hidapi) : hidapi(hidapi) {
    hidapi.onWrite = [this](const Bytes& report) { TakeReport(report); };
  }

  // The next `times` commands that begin with `code` are answered so instead.
  void AnswerNext(uint8_t code, const Replies& replies, size_t times = 1) {
    answers[code].insert(answers[code].end(), times, replies);
  }
  // The next command that begins with `code` is answered by a lone report of total 0.
  void AnswerTotal0(uint8_t code) {
    AnswerNext(code, {});
    hidapi.onWrite = [this, code](const Bytes& report) {
      const size_t before = CountOf(code);
      TakeReport(report);
      if (CountOf(code) == before) return;
      hidapi.ReplyReport(KeyboardReport(0, 0, {}));
      hidapi.onWrite = [this](const Bytes& next) { TakeReport(next); };
    };
  }
  // As AnswerNext for the data of blocks, which have no code.
  void AnswerNextData(const Replies& replies, size_t times = 1) {
    dataAnswers.insert(dataAnswers.end(), times, replies);
  }

  [[nodiscard]] size_t CountOf(uint8_t code) const {
    return static_cast<size_t>(
        std::count_if(commands.begin(), commands.end(),
                      [code](const Bytes& command) { return command.front() == code; }));
  }

  Replies blockStatus{Bytes{0xF4}, Bytes{0xD4}};  // what follows the data of a block
  size_t headerEcho = 9;  // as many bytes of a block header must come back, or no data follows
  Bytes polledWord{0xFF, 0xFF};    // what erase polls read
  Bytes capacity{0, 0, 0, 1};      // of the SPI flash
  std::map<uint32_t, Bytes> sums;  // what verify finds, by address; 0 where there is none
  std::vector<Bytes> commands;     // all messages but the data of blocks
  std::vector<Bytes> dataOfBlocks;

 private:
  void TakeReport(const Bytes& report) {
    const size_t total = ReadU32(report, 1);
    const size_t size = std::min<size_t>(total - message.size(), 55);
    message.insert(message.end(), report.begin() + 9,
                   report.begin() + static_cast<ptrdiff_t>(9 + size));
    if (message.size() == total) TakeMessage(std::exchange(message, {}));
  }

  void TakeMessage(const Bytes& whole) {
    if (std::exchange(awaitsData, false)) {
      dataOfBlocks.push_back(whole);
      return Queue(Next(dataAnswers, blockStatus));
    }
    commands.push_back(whole);
    const Replies replies = Next(answers[whole.front()], GoodAnswer(whole));
    awaitsData = whole.front() == 0x07 && IsEcho(replies, whole);
    Queue(replies);
  }

  [[nodiscard]] Replies GoodAnswer(const Bytes& command) const {
    switch (command.front()) {
      case 0x01:
        return {Bytes{0xF1}};
      case 0x03:
        return {Joined(Bytes(5, 0), polledWord)};
      case 0x08: {
        const auto sum = sums.find(ReadU32(command, 1));
        return {Joined(Bytes(command.begin(), command.begin() + 9),
                       sum == sums.end() ? Bytes{0, 0} : sum->second)};
      }
      case 0x0B:
        return {Joined({0xF1}, capacity)};
      default:
        return {command};
    }
  }

  [[nodiscard]] bool IsEcho(const Replies& replies, const Bytes& command) const {
    return replies.size() == 1 && replies[0] && replies[0]->size() == command.size() &&
           std::equal(command.begin(), command.begin() + static_cast<ptrdiff_t>(headerEcho),
                      replies[0]->begin());
  }

  static Replies Next(std::deque<Replies>& queued, const Replies& otherwise) {
    if (queued.empty()) return otherwise;
    Replies next = queued.front();
    queued.pop_front();
    return next;
  }

  static Bytes Joined(Bytes head, const Bytes& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
  }

  void Queue(const Replies& replies) {
    for (const auto& reply : replies) {
      if (reply) {
        hidapi.Reply(*reply);
      } else {
        hidapi.ReplyFailure();
      }
    }
  }

  ScriptedHidapi& hidapi;
  Bytes message;  // as far as its reports have arrived
  bool awaitsData = false;
  std::map<uint8_t, std::deque<Replies>> answers;
  std::deque<Replies> dataAnswers;
};

}  // namespace hollin
