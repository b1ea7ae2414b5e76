// SPDX-License-Identifier: MIT
#include "cli/finding_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace hollin::words {
namespace {

struct Words {
  FindingCode code;
  std::string_view name;
  std::string_view message;  // {text}, {number} and {other} are the finding's
  std::string_view mend;
};

constexpr std::array kWords = {
    Words{FindingCode::kKeyGap, "button-gap",
          "Button {number} is named but button {other} is not: users are told to hold down a "
          "button without a name.",
          "Name the buttons from the first on, without a gap."},
    Words{FindingCode::kKeyRepeated, "button-repeated",
          "Buttons {number} and {other} have the same name, \"{text}\": users hold down one button "
          "for both.",
          "Name each button once."},
    Words{FindingCode::kTextEmpty, "text-empty",
          "The {text} is empty: users cannot see what they are about to install.",
          "Give the package a product model and a firmware version."},
    Words{FindingCode::kTextBlank, "text-blank",
          "The {text} consists of blanks: users see nothing there.",
          "Write a text that can be seen, or leave the name of a button empty."},
    Words{FindingCode::kTextNotAscii, "text-not-ascii",
          "The {text} holds characters that are not printable ASCII: some programs show it "
          "garbled.",
          "Use printable ASCII only."},
    Words{FindingCode::kTextBehindNul, "text-behind-nul",
          "The {text} goes on behind a NUL byte, and nobody sees what stands there.",
          "Pad texts with NUL bytes only."},
    Words{FindingCode::kDataTypeUpperBits, "data-type-upper-bits",
          "The upper 16 bits of the data type are {number:#06x}, and nobody looks at them.",
          "Set them to 0."},
    Words{FindingCode::kRegionOverlapsHeaders, "region-overlaps-headers",
          "The {text} begins at {number}, inside the headers, which end at {other}: header bytes "
          "are taken for its contents.",
          "Put every region behind the headers."},
    Words{FindingCode::kRegionsOverlap, "regions-overlap",
          "The {text} lie on the same bytes of the file, {number} in all.",
          "Give each region bytes of its own."},
    Words{FindingCode::kRegionUnsummed, "region-unsummed",
          "The {text} has {number} bytes: from 2^31 bytes on the sum is 0 and protects nothing.",
          "Keep regions shorter than 2^31 bytes."},
    Words{FindingCode::kSecondPackIgnored, "second-pack-ignored",
          "Bytes 256 to 383 are a sound header of a second pack, but the package says that it has "
          "one pack: the second is not written.",
          "Set the number of packs (byte 123) to 2, or clear the block."},
    Words{FindingCode::kPacksSameFlash, "packs-same-flash",
          "Both packs write to the same flash: the second overwrites what the first has written.",
          "Put one of the images into a package of its own, or correct what selects the flash."},
    Words{FindingCode::kUpdateTakesHours, "update-takes-hours",
          "The update takes {other} steps and at least {number} minutes.",
          "Look at the size of blocks or sectors: every step has a pause of half a second."},

    Words{FindingCode::kByteOrderMark, "byte-order-mark",
          "The description begins with a byte order mark, which spoils its first line.",
          "Save the description as UTF-8 without a byte order mark."},
    Words{FindingCode::kLineTooLong, "line-too-long",
          "The line is longer than 99 bytes: what follows them is read as a further line.",
          "Keep every line, comments too, at most 99 bytes long."},
    Words{FindingCode::kLineNotUtf8, "line-not-utf8",
          "The line is not UTF-8 and is skipped. (It may have been cut inside a character, after "
          "99 bytes.)",
          "Save the description as UTF-8 and keep lines short."},
    Words{FindingCode::kLineHasNul, "line-has-nul", "A NUL byte hides the rest of the line.",
          "Remove the NUL byte."},
    Words{FindingCode::kCommentMark, "comment-mark",
          "\"{text}\" looks like a comment, but this kind of description does not know the mark: "
          "it is read like any other line.",
          "Begin comments with \";\"."},
    Words{FindingCode::kCommentBehindValue, "comment-behind-value",
          "The comment behind the number is read as a part of it: \"{text}\" counts as {number}.",
          "Give the comment a line of its own."},
    Words{FindingCode::kCommentBehindText, "comment-behind-text",
          "The comment behind the text is a part of it: \"{text}\".",
          "Give the comment a line of its own."},
    Words{FindingCode::kHeaderTail, "header-tail",
          "\"{text}\" stands behind the header in its line and is not read.",
          "Put it into a line of its own."},
    Words{FindingCode::kSectionSpelling, "section-spelling",
          "Section \"{text}\" is not known, and its lines are skipped: the name is spelled "
          "\"Modle\".",
          "Write [Flash Modle] and [Write Modle]."},
    Words{FindingCode::kSectionUnknown, "section-unknown",
          "Section \"{text}\" is not known: its lines are skipped.",
          "Correct the name, or remove the section."},
    Words{FindingCode::kLineBeforeSections, "line-before-sections",
          "\"{text}\" stands before the first section: such lines are skipped.",
          "Put lines behind the header of their section."},
    Words{FindingCode::kKeyUnknown, "key-unknown",
          "Key \"{text}\" is not known in its section: the line is skipped.",
          "Correct the key, or remove the line."},
    Words{FindingCode::kKeyOfOtherSection, "key-of-other-section",
          "Key \"{text}\" names a setting of another section. What stands before \"=\" is not read "
          "here: the value counts for the section that the line stands in.",
          "Put the line under the header of its own section."},
    Words{FindingCode::kSettingRepeated, "setting-repeated",
          "\"{text}\" sets again what line {number} has set: the last line counts.",
          "Keep one of the lines."},
    Words{FindingCode::kSettingWithoutEffect, "setting-without-effect",
          "\"{text}\" is set to {number}, but nothing uses the value.",
          "Nothing, unless an effect was expected. Without the line there is no finding."},
    Words{FindingCode::kNumberSuffix1024, "number-suffix-1024",
          "\"{text}\" is {number}: M stands for 1024, like K.",
          "Write megabytes as 1024K or in hexadecimal."},
    Words{FindingCode::kNumberNotDigits, "number-not-digits",
          "\"{text}\" is no decimal number, but is taken for one: {number}.",
          "Write decimal digits, at most with K behind them, or a hexadecimal number."},
    Words{FindingCode::kNumberWraps, "number-wraps",
          "\"{text}\" does not fit into 32 bits and counts as {number}.",
          "Use a number below 2^32."},
    Words{FindingCode::kReservedListEmpty, "reserved-list-empty",
          "The list of reserved sectors is empty: without an entry the description is refused.",
          "List a sector that must not be written; where there is none, an address that no sector "
          "begins at."},

    Words{FindingCode::kA1DataLengthZero, "a1-data-length-zero",
          "\"Data Length\" is 0, which counts as 65536.", "Write what is meant."},
    Words{FindingCode::kA1DataLengthAbove65536, "a1-data-length-above-65536",
          "A block has {number} bytes, but the keyboard is told the low 16 bits of that "
          "({other}).",
          "Use a \"Data Length\" of at most 65536, which is announced as 0."},
    Words{
        FindingCode::kA1SeveralBlocks, "a1-several-blocks",
        "The image is written in {number} blocks. The format settles the length of the last "
        "block alone; this program takes \"Data Length\" ({other}) for those before it, and "
        "others may not.",
        "Where other programs are used too, choose a \"Data Length\" that holds the whole image."},
    Words{
        FindingCode::kA1StartAddress, "a1-start-address",
        "\"Start Address\" is {number:#x}: the blocks go to offset 0 all the same, but the "
        "keyboard verifies from that address on, and it counts twice against the room in the chip.",
        "Use 0, unless the keyboard is known to write through a window that begins there."},
    Words{
        FindingCode::kA1StartAddressWraps, "a1-start-address-wraps",
        "\"Start Address\" {number:#x} lies beyond half of the chip ({other:#x} bytes): it counts "
        "twice, the room wraps, and an image of nearly any length is taken.",
        "Use a start address in the lower half of the chip."},

    Words{FindingCode::kA2SectorsNotAscending, "a2-sectors-not-ascending",
          "In the list of sectors {number:#x} is followed by {other:#x}: it does not ascend, so "
          "that every update fails before anything is erased.",
          "List every sector once, in ascending order."},
    Words{FindingCode::kA2PlanOutsideImage, "a2-plan-outside-image",
          "The planned sectors reach outside the image, so that the first of them fails before "
          "anything is erased.",
          "Correct \"FileOffset\" (in words, two bytes each) and the list of sectors."},
    Words{FindingCode::kA2NothingToWrite, "a2-nothing-to-write",
          "\"FileOffset\" ({number} words) skips the whole image: a sector is erased and nothing "
          "is written.",
          "Correct \"FileOffset\", or the image."},
    Words{FindingCode::kA2OddByteDropped, "a2-odd-byte-dropped",
          "The image has an odd number of bytes: the last one is not written.",
          "Pad the image to whole words."},
    Words{FindingCode::kA2ReservedBytesDropped, "a2-reserved-bytes-dropped",
          "{number} bytes of the image fall on the reserved sector at {other:#x} and are dropped.",
          "Leave a gap in the image there, of equal bytes, or do not reserve the sector."},
    Words{FindingCode::kA2ErasedValue, "a2-erased-value",
          "The value of an erased word, {number:#x}, is above 0xFFFF: no word ever reads so, and "
          "every erase fails.",
          "Use a value of 16 bits, mostly 0xFFFF."},
    Words{FindingCode::kA2EraseTimeShort, "a2-erase-time-short",
          "\"MaxSectorEraseTime\" is {number} ms, but the first look comes after 700 ms: every "
          "sector is erased six times.",
          "Use 700 or more."},
    Words{FindingCode::kA2BlockAnnouncedAsZero, "a2-block-announced-as-zero",
          "A block of 65536 words is announced as 0 words.",
          "Use a \"Block Size\" below 65536, unless the keyboard takes 0 for 65536."},
    Words{FindingCode::kA2LastSectorSize, "a2-last-sector-size",
          "The image reaches the last sector of the list, at {number:#x}. No next address tells "
          "its size: it counts as large as the one before it ({other} bytes).",
          "Add the address behind that sector to the list."},
    Words{FindingCode::kA2CyclesAbsolute, "a2-cycles-absolute",
          "The first sector begins at 0x1400: the addresses of erase cycles are then taken as "
          "listed and do not count from the sector.",
          "Nothing, if that is how the chip wants it."},
    Words{FindingCode::kA2CyclesEmpty, "a2-cycles-empty",
          "Section \"{text}\" has no cycles: the chip does not get this command.",
          "List the cycles of the command."},
    Words{FindingCode::kA2CycleKeyBoth, "a2-cycle-key-both",
          R"(Key "{text}" has both "addr" and "data" in it and counts as an address.)",
          "Use one of the words."},
    Words{FindingCode::kA2CycleOrder, "a2-cycle-order",
          "Key \"{text}\" comes behind number {other}: the order of the lines counts, not the "
          "numbers in the keys.",
          "Bring the lines into the order of the cycles."},
    Words{FindingCode::kA2LastEraseAddress, "a2-last-erase-address",
          "The address of the last erase cycle, {number:#x}, is not used: that cycle goes to the "
          "sector itself.",
          "Write 0 there."},

    Words{FindingCode::kC1NeverFits, "c1-never-fits",
          "No flash that can be named holds the image beside the reserved sectors, so that the "
          "first step fails.",
          "Correct the sector size and the reserved sectors."},
    Words{FindingCode::kC1GapNotSkipped, "c1-gap-not-skipped",
          "The image has a gap for the reserved sector at {number:#x}, but here nothing of the "
          "image is skipped: the gap is written into the next free sector.",
          "Leave no gap: reserved sectors push the image on."},

    Words{FindingCode::kReservedWithoutSector, "reserved-without-sector",
          "No sector begins at the reserved address {number:#x}: it reserves nothing.",
          "Write the address at which the sector begins. Nothing, if it only fills the list."},
    Words{FindingCode::kValueTruncated, "value-truncated",
          "\"{text}\" holds {number:#x}, of which the keyboard is sent {other:#x}.",
          "Use a value that fits its place in the command."},
};

const Words& WordsOf(FindingCode code) {
  return *std::find_if(kWords.begin(), kWords.end(),
                       [code](const Words& words) { return words.code == code; });
}

}  // namespace

std::string_view CodeOf(FindingCode code) { return WordsOf(code).name; }

std::string MessageOf(const Finding& finding) {
  std::string message =
      fmt::format(fmt::runtime(WordsOf(finding.code).message), fmt::arg("text", finding.text),
                  fmt::arg("number", finding.number), fmt::arg("other", finding.other));
  if (finding.more > 0) message += fmt::format(" (And {} more like it.)", finding.more);
  return message;
}

std::string_view MendOf(FindingCode code) { return WordsOf(code).mend; }

std::string PlaceOf(const Finding& finding) {
  if (!finding.pack) return "";
  const std::string pack = fmt::format("pack {}", *finding.pack + 1);
  if (finding.line == 0) return pack + ": ";
  return fmt::format("{}, line {}, column {}: ", pack, finding.line, finding.column);
}

std::vector<FindingCode> AllFindingCodes() {
  std::vector<FindingCode> codes(kWords.size());
  std::transform(kWords.begin(), kWords.end(), codes.begin(),
                 [](const Words& words) { return words.code; });
  return codes;
}

}  // namespace hollin::words
