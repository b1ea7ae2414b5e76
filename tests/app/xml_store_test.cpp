// SPDX-License-Identifier: MIT
#include "app/xml_store.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>

#include "app/object_model.h"
#include "app/process_signals.h"
#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

class XmlStoreTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::string File() const { return folder.Path("Hollin.storedata"); }
  bool Read(StoredObjects& objects) { return ReadXmlStore(File(), model, objects, error); }
  bool ReadText(std::string_view text) {
    folder.Write("Hollin.storedata", text);
    return Read(objectsRead);
  }
  bool Write(const StoredObjects& objects) { return WriteXmlStore(File(), objects, error); }
  [[nodiscard]] std::string FileText() const {
    const Bytes bytes = folder.Read("Hollin.storedata");
    return {bytes.begin(), bytes.end()};
  }
  void ExpectOnlyTheStore() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
      EXPECT_EQ(entry.path(), File());
    }
  }

  TempFolder folder;
  ObjectModel model{{{"Note", {"text", "title"}}, {"Mark", {}}}};
  StoredObjects objectsRead;
  AppError error;
};

TEST_F(XmlStoreTest, AFileThatIsNotThereHoldsNothing) {
  objectsRead[1] = {.entity = "Mark"};
  EXPECT_TRUE(Read(objectsRead));
  EXPECT_EQ(objectsRead, StoredObjects{});
}

TEST_F(XmlStoreTest, TheFileIsTheOneThatIsDocumented) {
  EXPECT_TRUE(
      Write({{1, {.entity = "Note", .values = {{"text", "a<b"}}}}, {7, {.entity = "Mark"}}}));
  EXPECT_EQ(FileText(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<store version=\"1\">\n"
            "    <object id=\"1\" entity=\"Note\">\n"
            "        <value attribute=\"text\" text=\"a&lt;b\"/>\n"
            "    </object>\n"
            "    <object id=\"7\" entity=\"Mark\"/>\n"
            "</store>\n");
  ExpectOnlyTheStore();
}

TEST_F(XmlStoreTest, WhatIsWrittenIsReadAgain) {
  const StoredObjects objects = {
      {1, {.entity = "Note", .values = {{"text", "\t a \r\n\n b "}, {"title", "<&>\"'"}}}},
      {2, {.entity = "Note", .values = {{"text", ""}, {"title", "Klavier \u00FC \U0001F3B9"}}}},
      {18446744073709551615U, {.entity = "Mark"}}};
  EXPECT_TRUE(Write(objects));
  EXPECT_TRUE(Read(objectsRead));
  EXPECT_EQ(objectsRead, objects);
  EXPECT_TRUE(Write({}));
  EXPECT_TRUE(Read(objectsRead));
  EXPECT_EQ(objectsRead, StoredObjects{});
}

TEST_F(XmlStoreTest, ADamagedFileIsAnErrorAndGivesNothing) {
  for (const char* text :
       {"", "\n", "text", "<store version='1'>", "<store/>", "<store version='2'/>",
        "<model version='1'/>", "<store version='1'/>text", "<store version='1'>text</store>",
        "<store version='1'><other/></store>",
        "<store version='1'><object id='1' entity='Mark'/><object id='1' entity='Mark'/></store>",
        "<store version='1'><object id='x' entity='Mark'/></store>",
        "<store version='1'><object id='-1' entity='Mark'/></store>",
        "<store version='1'><object id='18446744073709551616' entity='Mark'/></store>",
        "<store version='1'><object entity='Mark'/></store>",
        "<store version='1'><object id='1'/></store>",
        "<store version='1'><object id='1' entity='Other'/></store>",
        // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one text on two lines.
        "<store version='1'><object id='1' entity='Mark'><object id='2' entity='Mark'/></object>"
        "</store>",
        "<store version='1'><object id='1' entity='Mark'><value "
        "attribute='text'/></object></store>",
        "<store version='1'><object id='1' entity='Note'><value attribute='text'/>"
        "<value attribute='text'/></object></store>",
        "<store version='1'><object id='1' entity='Note'><value attribute='text'>x</value></object>"
        "</store>",
        "<store version='1'>\xFF</store>", "<store version='1'>\x01</store>"}) {
    error = {};
    EXPECT_FALSE(ReadText(text)) << text;
    EXPECT_EQ(objectsRead, StoredObjects{});
    EXPECT_TRUE(error.Is("com.tovari.Hollin.store", 2)) << text;
  }
  EXPECT_EQ(error.description.toStdString(),
            "The application data cannot be read (" + File() + ").");
  EXPECT_EQ(error.failureReason, "The file is damaged.");
}

TEST_F(XmlStoreTest, EntitiesAreNeitherExpandedNorFetched) {
  const std::string secret = folder.Write("secret", "secret");
  const std::string begin = "<?xml version='1.0'?><!DOCTYPE store ";
  const std::string end =
      "><store version='1'><object id='1' entity='Note'>"
      "<value attribute='text' text='&x;'/></object></store>";
  for (const std::string& type :
       {std::string("[]"), std::string("[<!ENTITY x 'y'>]"),
        "[<!ENTITY x SYSTEM 'file://" + secret + "'>]", "SYSTEM 'file://" + secret + "'",
        std::string("[<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                    "<!ENTITY x '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>]")}) {
    EXPECT_FALSE(ReadText(std::string(begin).append(type).append(end))) << type;
    EXPECT_EQ(objectsRead, StoredObjects{});
  }
  EXPECT_FALSE(ReadText("<store version='1'>&x;</store>"));
  EXPECT_FALSE(ReadText("<!DOCTYPE store><store version='1'/>"));
}

TEST_F(XmlStoreTest, DeepNestingAndManyAttributesEndSoon) {
  std::string deep = "<store version='1'>";
  for (int i = 0; i < 2000; i++) deep += "<object id='1' entity='Mark'>";
  EXPECT_FALSE(ReadText(deep));
  std::string wide = "<store version='1'><object id='1' entity='Mark'";
  for (int i = 0; i < 6000; i++) wide += " a" + std::to_string(i) + "=''";
  EXPECT_TRUE(ReadText(wide + "/></store>"));
}

TEST_F(XmlStoreTest, WhatCannotBeOpenedIsAnErrorAndIsNotWaitedFor) {
  const std::function<void()> prepared[] = {
      [&] { ASSERT_EQ(mkfifo(File().c_str(), 0600), 0); },
      [&] { std::filesystem::create_directory(File()); },
      [&] { std::filesystem::create_symlink(folder.Path("nowhere"), File()); },
      [&] { std::filesystem::create_symlink("/dev/zero", File()); },
      [&] {
        folder.Write("Hollin.storedata", "<store version='1'/>");
        std::filesystem::resize_file(File(), (64 << 10) + 1);
      },
  };
  for (const auto& prepare : prepared) {
    prepare();
    error = {};
    EXPECT_FALSE(Read(objectsRead));
    EXPECT_TRUE(error.Is("com.tovari.Hollin.store", 1));
    EXPECT_EQ(error.failureReason, "The file cannot be opened.");
    std::filesystem::remove(File());
  }
}

TEST_F(XmlStoreTest, AFileOf64KibibytesIsStillReadAndALargerOneIsNot) {
  std::string text = "<store version='1'/>";
  text.resize(64 << 10, ' ');
  EXPECT_TRUE(ReadText(text));
  text += ' ';
  EXPECT_FALSE(ReadText(text));
}

TEST_F(XmlStoreTest, WhatWouldBeTooLargeToReadIsNotWritten) {
  const auto withText = [](qsizetype length) {
    return StoredObjects{{1, {.entity = "Note", .values = {{"text", QString(length, 'x')}}}}};
  };
  ASSERT_TRUE(Write(withText(0)));
  const auto rest = static_cast<qsizetype>((64 << 10) - FileText().size());
  for (const qsizetype length : {rest - 1, rest}) {
    EXPECT_TRUE(Write(withText(length)));
    EXPECT_TRUE(Read(objectsRead));
    EXPECT_EQ(objectsRead, withText(length));
  }
  EXPECT_FALSE(Write(withText(rest + 1)));
  EXPECT_TRUE(error.Is("POSIX", EFBIG));
  EXPECT_TRUE(Read(objectsRead));
}

TEST_F(XmlStoreTest, AFailedWriteLeavesTheOldFileAndNothingElse) {
  const StoredObjects old = {{1, {.entity = "Mark"}}};
  ASSERT_TRUE(Write(old));
  IgnoreFileSizeSignal();
  rlimit limit = {100, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  const QString text(10'000, 'x');
  EXPECT_FALSE(Write({{1, {.entity = "Note", .values = {{"text", text}}}}}));
  limit.rlim_cur = RLIM_INFINITY;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_TRUE(error.Is("POSIX", EFBIG));
  EXPECT_EQ(error.description.toStdString(),
            "The application data cannot be saved (" + File() + ").");
  EXPECT_EQ(error.failureReason, "File too large");
  EXPECT_TRUE(Read(objectsRead));
  EXPECT_EQ(objectsRead, old);
  ExpectOnlyTheStore();
}

TEST_F(XmlStoreTest, AFolderThatIsGoneOrClosedIsAnError) {
  EXPECT_FALSE(WriteXmlStore(folder.Path("missing/file"), {}, error));
  EXPECT_TRUE(error.Is("POSIX", ENOENT)) << error.code;
  EXPECT_FALSE(WriteXmlStore("/proc/file", {}, error));
  EXPECT_EQ(error.domain, "POSIX");
  EXPECT_FALSE(WriteXmlStore(folder.Path(), {}, error));
  EXPECT_EQ(error.domain, "POSIX");
}

TEST_F(XmlStoreTest, ANameThatIsNoTextIsAnErrorAndNotAnotherName) {
  EXPECT_FALSE(WriteXmlStore(folder.Path("\xFF"), {}, error));
  EXPECT_TRUE(error.Is("POSIX", EILSEQ));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(XmlStoreTest, ALinkStaysALink) {
  std::filesystem::create_symlink(folder.Write("target", "<store version='1'/>"), File());
  EXPECT_TRUE(Write({{1, {.entity = "Mark"}}})) << error.failureReason.toStdString();
  EXPECT_TRUE(std::filesystem::is_symlink(File()));
  EXPECT_TRUE(Read(objectsRead));
  EXPECT_EQ(objectsRead.size(), 1U);
}

TEST(FitsXmlTest, ControlCharactersAndHalvesOfCharactersDoNot) {
  for (const char16_t fitting : {u'\t', u'\n', u'\r', u' ', u'\x7F', u'\uFFFD', u'\uE000'}) {
    EXPECT_TRUE(FitsXml(QString(QChar(fitting)))) << static_cast<int>(fitting);
  }
  for (const int odd : {0x00, 0x01, 0x08, 0x0B, 0x0C, 0x0E, 0x1F, 0xD800, 0xDFFF, 0xFFFE, 0xFFFF}) {
    EXPECT_FALSE(FitsXml(QString(QChar(odd)))) << odd;
  }
  EXPECT_TRUE(FitsXml(""));
  EXPECT_TRUE(FitsXml(QString::fromUcs4(U"\U0001F3B9")));
}

}  // namespace
}  // namespace hollin
