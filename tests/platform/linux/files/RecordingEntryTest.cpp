#include "platform/linux/files/RecordingEntry.h"

#include <gtest/gtest.h>

#include <string>

namespace audrel::linuxos {
namespace {

const RecordingEntry entry = {
    .file = "/home/me/Téléchargements/a talk=1.m4a",
    .identity = {.device = 2049, .inode = 131, .born = 1'763'838'220'123'456'789},
    .machine = {.id = "0123456789abcdef0123456789abcdef",
                .boot = "61aa16bc-bcf6-47ff-9b53-cf53709a78fe"}};

const std::string text =
    "file=/home/me/Téléchargements/a talk=1.m4a\n"
    "device=2049\n"
    "inode=131\n"
    "born=1763838220123456789\n"
    "machine=0123456789abcdef0123456789abcdef\n"
    "boot=61aa16bc-bcf6-47ff-9b53-cf53709a78fe\n";

std::string with(std::string changed, const std::string& what, const std::string& by) {
  changed.replace(changed.find(what), what.size(), by);
  return changed;
}

TEST(RecordingEntry, isSixLines) {
  EXPECT_EQ(textOf(entry), text);
  EXPECT_EQ(entryIn(text), entry);
}

TEST(RecordingEntry, isNoneWhenAnyByteIsMissing) {
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_EQ(entryIn(text.substr(0, size)), std::nullopt) << size;
  }
}

TEST(RecordingEntry, isNoneWhenALineIsAnotherOrOneFollows) {
  EXPECT_EQ(entryIn(with(text, "inode=", "knode=")), std::nullopt);
  EXPECT_EQ(entryIn(with(text, "inode=", "inode:")), std::nullopt);
  EXPECT_EQ(entryIn(with(text, "inode=131\n", "")), std::nullopt);
  EXPECT_EQ(entryIn(text + "more=1\n"), std::nullopt);
  EXPECT_EQ(entryIn(text + std::string(1, '\0')), std::nullopt);
  EXPECT_EQ(entryIn(with(text, "\n", "\r\n")), std::nullopt);
}

TEST(RecordingEntry, isNoneWhenANumberIsNone) {
  for (const char* number :
       {"", "-131", "+131", " 131", "131 ", "0x83", "1e3", "18446744073709551616", "one"}) {
    EXPECT_EQ(entryIn(with(text, "131", number)), std::nullopt) << number;
  }
}

TEST(RecordingEntry, namesAnAbsolutePathWithoutDetoursOrControlCharacters) {
  const std::string file = "/home/me/Téléchargements/a talk=1.m4a";
  for (const std::string& path :
       {std::string("talk.m4a"), std::string("./talk.m4a"), std::string("/home/../etc/talk.m4a"),
        std::string("/home/"), std::string("/"), std::string(), std::string("/home/a\ttalk.m4a"),
        std::string("/home/a\x7f"), std::string("/home/a\0talk.m4a", 16),
        std::string("/home/a\x1b[2J.m4a")}) {
    EXPECT_EQ(entryIn(with(text, file, path)), std::nullopt) << path;
    EXPECT_FALSE(canHaveEntry(path)) << path;
  }
  EXPECT_TRUE(canHaveEntry(file));
  EXPECT_FALSE(canHaveEntry("/home/two\nlines.m4a"));
}

}  // namespace
}  // namespace audrel::linuxos
