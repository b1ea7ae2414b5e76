// SPDX-License-Identifier: MIT
// What an A2 update wants of its description before it reads the image.
#include "tests/updaters/a2_test.h"

namespace hollin {
namespace {

struct Rule {
  const char* name;
  void (*change)(A2Description& flash);
  bool isUsable;
};

void PrintTo(const Rule& rule, std::ostream* out) { *out << rule.name; }

class A2UpdateRuleTest : public A2Test, public testing::WithParamInterface<Rule> {};

TEST_P(A2UpdateRuleTest, ADescriptionIsCheckedRuleByRule) {
  GetParam().change(update.flash);
  EXPECT_EQ(update.CheckConfig(), GetParam().isUsable);
}

using Flash = A2Description;

const Rule kRules[] = {
    {"AsItIs", [](Flash&) {}, true},
    {"NoModel", [](Flash& f) { f.flashModel = ""; }, false},
    {"NothingReserved", [](Flash& f) { f.reservedSectors = {}; }, false},
    {"BlockOf0", [](Flash& f) { f.blockSize = 0; }, false},
    {"BlockOf1", [](Flash& f) { f.blockSize = 1; }, false},
    {"BlockOf2", [](Flash& f) { f.blockSize = 2; }, true},
    {"BlockOf4097", [](Flash& f) { f.blockSize = 4097; }, false},
    {"BlockOf65534", [](Flash& f) { f.blockSize = 0xFFFE; }, true},
    {"BlockOf65536", [](Flash& f) { f.blockSize = 0x10000; }, true},
    {"BlockOf65537", [](Flash& f) { f.blockSize = 0x10001; }, false},
    {"BlockOf65538", [](Flash& f) { f.blockSize = 0x10002; }, false},
    {"BlockOf4294967294", [](Flash& f) { f.blockSize = 0xFFFFFFFE; }, false},
    {"NoWriteBack", [](Flash& f) { f.maxWriteBack = 0; }, false},
    {"WriteBackOf1", [](Flash& f) { f.maxWriteBack = 1; }, true},
    {"NoEraseTime", [](Flash& f) { f.maxSectorEraseTime = 0; }, false},
    {"EraseTimeOf1", [](Flash& f) { f.maxSectorEraseTime = 1; }, true},
    {"EraseAddressMissing", [](Flash& f) { f.eraseAddrs.pop_back(); }, false},
    {"EraseAddressTooMany", [](Flash& f) { f.eraseAddrs.push_back(0); }, false},
    {"EraseDataMissing", [](Flash& f) { f.eraseData.pop_back(); }, false},
    {"EraseDataTooMany", [](Flash& f) { f.eraseData.push_back(0); }, false},
    {"ProgramAddressMissing", [](Flash& f) { f.programAddrs.pop_back(); }, false},
    {"ProgramAddressTooMany", [](Flash& f) { f.programAddrs.push_back(0); }, false},
    {"ProgramDataMissing", [](Flash& f) { f.programData.pop_back(); }, false},
    {"ProgramDataTooMany", [](Flash& f) { f.programData.push_back(0); }, false},
    {"WriteBufferAddressMissing", [](Flash& f) { f.writeBufferAddrs.pop_back(); }, false},
    {"WriteBufferAddressTooMany", [](Flash& f) { f.writeBufferAddrs.push_back(0); }, false},
    {"WriteBufferDataMissing", [](Flash& f) { f.writeBufferData.pop_back(); }, false},
    {"WriteBufferDataTooMany", [](Flash& f) { f.writeBufferData.push_back(0); }, false},
    {"ProgramBufferAddressMissing", [](Flash& f) { f.programBufferAddrs.pop_back(); }, false},
    {"ProgramBufferAddressTooMany", [](Flash& f) { f.programBufferAddrs.push_back(0); }, false},
    {"ProgramBufferDataMissing", [](Flash& f) { f.programBufferData.pop_back(); }, false},
    {"ProgramBufferDataTooMany", [](Flash& f) { f.programBufferData.push_back(0); }, false},
    {"NoSector", [](Flash& f) { f.sectorAddrs = {}; }, false},
    {"OneSector", [](Flash& f) { f.sectorAddrs = {0}; }, true},
    // The lists of the way of programming that is not used count as well.
    {"WordProgramBrokenInWriteBufferMode",
     [](Flash& f) {
       f.writeBufferMode = true;
       f.programData.pop_back();
     },
     false},
    {"WriteBufferMode", [](Flash& f) { f.writeBufferMode = true; }, true},
};

INSTANTIATE_TEST_SUITE_P(Rules, A2UpdateRuleTest, testing::ValuesIn(kRules),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace hollin
