// SPDX-License-Identifier: MIT
// The base of every updater: one object handles one data pack, that is one flash description and
// one image. The sequencer drives it through its virtual operations; the base brings the commands
// that every flash kind shares (mode, verify, end), the checksums and the numbers of flash
// descriptions. docs/protocol.md holds the packets.
//
// Operations answer false when they fail; why is told to `observer`, if there is one. An updater is
// loaded on one thread and may be stepped on another, never on two at once.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/file.h"
#include "device/load_refusal.h"
#include "device/update_observer.h"

namespace hollin {

class HidDevice;

// Reads a whole file; false when that cannot be done.
using FileReader = std::function<bool(const std::string& path, FileContents& contents)>;

class AXUpdate {
 public:
  AXUpdate(std::string configPath, std::string imagePath);
  AXUpdate(const AXUpdate&) = delete;
  AXUpdate& operator=(const AXUpdate&) = delete;

  // The order of the virtual operations is fixed.
  virtual ~AXUpdate() = default;
  // Reads the description and the image, checks them and plans the steps. Once per updater.
  [[nodiscard]] virtual bool LoadFiles() { return false; }
  [[nodiscard]] virtual bool CheckConfig() { return false; }
  [[nodiscard]] virtual bool PlanSteps() { return false; }
  // Runs middle step `index`, counted from 0; the steps run in order. An index beyond the plan is
  // refused with nothing sent.
  [[nodiscard]] virtual bool RunStep(uint32_t index);
  [[nodiscard]] virtual bool VerifyImage() { return true; }
  // Opens the link and switches the keyboard into update mode, in at most `retries` attempts.
  [[nodiscard]] virtual bool EnterUpdateMode(int32_t retries);

  // The number of steps, the first (mode) and the last (verify) included. 0 until LoadFiles
  // succeeded.
  [[nodiscard]] uint32_t StepCount() const { return stepCount; }

  // One message to or from the keyboard, as HidDevice carries it.
  [[nodiscard]] bool Send(ByteView data);
  [[nodiscard]] bool Receive(std::span<uint8_t> buffer);
  // Deliberate: the time-out, in seconds, has no effect. A flash is busy as long as it is busy, and
  // giving up in the middle of a sector helps nobody; removing the keyboard ends every wait.
  [[nodiscard]] bool Send(ByteView data, double timeOut);
  [[nodiscard]] bool Receive(std::span<uint8_t> buffer, double timeOut);

  // Has the keyboard sum a range of its flash and compares the low 16 bits. Wants the open link.
  // Address and length are in the flash kind's own units.
  [[nodiscard]] bool VerifyRange(uint32_t address, uint32_t length, uint32_t expectedSum);

  // Ends the update and closes the link, whatever the keyboard answers. False when the end was not
  // acknowledged.
  [[nodiscard]] bool FinishUpdate(bool success);

  // 16-bit sums: of the image's little-endian words, of words, of bytes. An odd last byte is no
  // word; lengths below 1 and absent data sum to 0.
  [[nodiscard]] uint32_t ImageWordSum() const;
  [[nodiscard]] static uint32_t WordSum(const uint8_t* data, int32_t length);
  [[nodiscard]] static uint32_t ByteSum(const uint8_t* data, int32_t length);

  // The numbers of flash descriptions: hexadecimal with a 0x prefix or an H suffix, else decimal
  // with K or M. Arithmetic wraps at 32 bits. docs/flash-descriptions.md has the whole syntax.
  // `value` may be changed even when the answer is false.
  [[nodiscard]] static bool ParseNumber(std::string_view text, uint32_t& value);
  // The same of a text that is known to be UTF-8 without blanks at its ends.
  [[nodiscard]] static bool ParseTrimmed(std::string_view text, uint32_t& value);
  [[nodiscard]] static bool ParseHex(std::string_view digits, uint32_t& value);
  [[nodiscard]] static bool ParseDecimal(std::string_view digits, uint32_t& value);

  std::string configPath;
  std::string imagePath;
  std::unique_ptr<uint8_t[]> image;  // null until LoadFiles read it
  int64_t imageLength = 0;
  uint16_t checksum = 0;  // of the image or of the block last written
  uint32_t stepCount = 0;
  HidDevice* link = nullptr;  // the process-wide link, never owned; null until the first Connect
  uint32_t mode = 0;          // the low byte selects the kind of flash in the mode command
  FileContents description;   // as it was read; empty where there was none
  UpdateObserver* observer = nullptr;        // lent by the caller
  LoadRefusal refusal = LoadRefusal::kNone;  // why LoadFiles was false
  // Where LoadFiles takes the two files from. The disk, unless the caller has them in memory.
  FileReader readFile = [](const std::string& path, FileContents& contents) {
    return ReadWholeFile(path, contents);
  };

 protected:
  // Steps are told in these verbs. Replies are compared in full or in their first `compared` bytes,
  // and a byte that the keyboard did not send never counts as equal. `timeOut` is as for Send.
  [[nodiscard]] bool Connect();
  [[nodiscard]] bool ExchangePrefix(ByteView command, ByteView expected, size_t compared,
                                    double timeOut = kNoTimeOut);
  [[nodiscard]] bool Exchange(ByteView command, ByteView expected, double timeOut = kNoTimeOut);
  // Sends a command until the reply echoes it, at most `resends` times more. Only a wrong echo is
  // answered by sending again.
  [[nodiscard]] bool SendUntilEchoed(ByteView command, int resends, double timeOut);
  [[nodiscard]] bool AwaitStatus(uint8_t status, double timeOut = kNoTimeOut);
  // A command by itself, and a reply by itself that is not compared here: `reply` is filled
  // beforehand with bytes that mean nothing good.
  [[nodiscard]] bool SendCommand(ByteView command, double timeOut);
  [[nodiscard]] bool AwaitReply(std::span<uint8_t> reply, double timeOut);

  [[nodiscard]] ByteView ImageView() const;
  // Reads the whole image file; false when it cannot be read or is empty.
  [[nodiscard]] bool LoadImage();
  // Keeps why the files are refused and answers false.
  bool Refuse(LoadRefusal reason);
  // Refuses what does not fit a signed 32-bit number, so that the sum over two packs cannot wrap
  // into "no steps".
  [[nodiscard]] bool SetStepCount(uint64_t count);
  // Tells the observer and answers false.
  bool Fail(UpdateFailure reason, ByteView expected = {}, ByteView reply = {});

 private:
  enum class Comparison { kEqual, kDifferent, kFailed };
  [[nodiscard]] Comparison CompareReply(ByteView expected, size_t compared, double timeOut);

  static constexpr double kNoTimeOut = 0;

  Bytes lastCommand;  // for the observer
};

}  // namespace hollin
