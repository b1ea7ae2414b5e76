// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "package/package_findings.h"
#include "package/package_inspection.h"
#include "tests/package/literal_packages.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"

namespace hollin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

FileKind KindOf(std::string_view text) { return GuessFileKind(ViewOf(text)); }

TEST(FileKindTest, IsToldByTheFirstBytes) {
  EXPECT_EQ(KindOf("<!doctype HTML>"), FileKind::kWebPage);
  EXPECT_EQ(KindOf("\n <HTML lang=en>"), FileKind::kWebPage);
  EXPECT_EQ(KindOf("PK\x03\x04"), FileKind::kZip);
  EXPECT_EQ(KindOf("\x1F\x8B\x08"), FileKind::kGzip);
  EXPECT_EQ(KindOf("7z\xBC\xAF\x27\x1C"), FileKind::kSevenZip);
  EXPECT_EQ(KindOf("Rar!\x1A\x07"), FileKind::kRar);
  EXPECT_EQ(KindOf("%PDF-1.7"), FileKind::kPdf);
  EXPECT_EQ(KindOf("MZ\x90"), FileKind::kProgram);
  EXPECT_EQ(KindOf("\x89PNG\r\n\x1A"), FileKind::kPicture);
  EXPECT_EQ(KindOf("Dear sir,\r\n\tG\xC3\xBCnter\n"), FileKind::kText);
  EXPECT_EQ(KindOf(std::string_view("\0\0\0", 3)), FileKind::kZeros);
  EXPECT_EQ(KindOf(std::string_view("\0\0\1", 3)), FileKind::kUnknown);
  EXPECT_EQ(KindOf("PK\x03\x05"), FileKind::kUnknown);
}

class InspectionTest : public LinkTest {
 protected:
  RecordedLog log;
};

TEST_F(InspectionTest, TouchesNeitherTheLogNorTheKeyboard) {
  const Bytes package = PackageAround("[Chip Info]\nColour=red\nChip Size=1K\n", Counting(10));
  EXPECT_TRUE(InspectPackage(package).isValid);
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_THAT(hidapi.calls, IsEmpty());
}

TEST_F(InspectionTest, AnEmptyFileIsCutShortByItsHeaders) {
  const PackageInspection inspection = InspectPackage({});
  EXPECT_FALSE(inspection.isValid);
  EXPECT_EQ(inspection.verdict.defect, PackageDefect::kCutShort);
  EXPECT_EQ(inspection.missingBytes, 256U);
}

TEST_F(InspectionTest, TheBytesThatAreMissingAreThoseOfTheFarthestRegion) {
  const Bytes whole = TwoPackPackage();  // ends 3 bytes behind its last region
  EXPECT_EQ(InspectPackage(ByteView(whole).first(whole.size() - 3)).missingBytes, 0U);
  EXPECT_EQ(InspectPackage(ByteView(whole).first(whole.size() - 4)).missingBytes, 1U);
  // Without its header the second pack is unknown; the first ends at 487.
  EXPECT_EQ(InspectPackage(ByteView(whole).first(300)).missingBytes, 187U);
}

TEST_F(InspectionTest, PacksAreKnownWhoseHeadersCanBeBelieved) {
  const auto knownWithout = [](size_t offset) {
    Bytes package = TwoPackPackage();
    package[offset] ^= 1;
    return InspectPackage(package).KnownPacks();
  };
  const Bytes whole = TwoPackPackage();
  EXPECT_EQ(InspectPackage(whole).KnownPacks(), 2U);
  EXPECT_EQ(InspectPackage({}).KnownPacks(), 0U);
  EXPECT_EQ(InspectPackage(ByteView(whole).first(200)).KnownPacks(), 0U);
  EXPECT_EQ(InspectPackage(ByteView(whole).first(300)).KnownPacks(), 1U);
  EXPECT_EQ(knownWithout(32), 0U);   // the file header's sum is wrong
  EXPECT_EQ(knownWithout(123), 0U);  // three packs
  EXPECT_EQ(knownWithout(128), 0U);  // the first pack header's sum
  EXPECT_EQ(knownWithout(256), 1U);  // the second one's
  EXPECT_EQ(knownWithout(456), 2U);  // a description's
  EXPECT_EQ(knownWithout(384), 2U);  // an image's
}

TEST_F(InspectionTest, ManyFindingsOfOneKindAreCounted) {
  std::string description = "[Chip Info]\nChip Size=1K\n";
  for (int i = 0; i < 1000; i++) description += "Colour=red\n";
  const PackageInspection inspection = InspectPackage(PackageAround(description, Counting(10)));
  size_t shown = 0;
  size_t more = 0;
  for (const Finding& finding : inspection.findings.All()) {
    if (finding.code != FindingCode::kKeyUnknown) continue;
    shown++;
    more += finding.more;
  }
  EXPECT_EQ(shown, 5U);
  EXPECT_EQ(more, 995U);
}

TEST_F(InspectionTest, ARegionFrom2To31BytesOnIsUnsummed) {
  const Bytes file(256);
  PackageHeaders headers{.packCount = 1, .packs = {}};
  headers.packs[0].data = {.address = 256, .length = 0x7FFFFFFF, .sum = 0};
  const auto codes = [&] {
    FindingList findings;
    FindInHeaders(file, headers, findings);
    std::vector<FindingCode> found;
    for (const Finding& finding : findings.All()) found.push_back(finding.code);
    return found;
  };
  EXPECT_THAT(codes(), ElementsAre(FindingCode::kTextEmpty, FindingCode::kTextEmpty));
  headers.packs[0].data.length++;
  EXPECT_THAT(codes(), ElementsAre(FindingCode::kTextEmpty, FindingCode::kTextEmpty,
                                   FindingCode::kRegionUnsummed));
}

}  // namespace
}  // namespace hollin
