#include "cli/Table.h"

#include <gtest/gtest.h>

#include <clocale>
#include <optional>
#include <string>

namespace audrel::cli {
namespace {

class Table : public testing::Test {
 protected:
  Table() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
  ~Table() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Table, countsTheColumnsThatATerminalNeeds) {
  EXPECT_EQ(displayWidth(""), 0U);
  EXPECT_EQ(displayWidth("Zoé"), 3U);
  EXPECT_EQ(displayWidth("Zoe\u0301"), 3U);  // the accent on its own
  EXPECT_EQ(displayWidth("音楽"), 4U);
  EXPECT_EQ(displayWidth("한국"), 4U);
  EXPECT_EQ(displayWidth("🎵"), 2U);
}

TEST_F(Table, countsCharactersWhereWidthsAreNotKnown) {
  std::setlocale(LC_CTYPE, "C");
  EXPECT_EQ(displayWidth("Zoé 音楽"), 6U);
}

TEST_F(Table, cutsWhereACharacterEnds) {
  EXPECT_EQ(cutToWidth("音楽番組", 8), "音楽番組");
  EXPECT_EQ(cutToWidth("音楽番組", 7), "音楽番…");
  EXPECT_EQ(cutToWidth("音楽番組", 6), "音楽…");
  EXPECT_EQ(cutToWidth("Zoe\u0301 Zoe\u0301", 4), "Zoe\u0301…");
  EXPECT_EQ(cutToWidth("音楽", 1), "…");
}

TEST_F(Table, alignsColumnsOfCharactersOfAnyWidth) {
  EXPECT_EQ(
      tableOf({{"ID", "NAME", "PLAYS"}, {"#1", "音楽", "x"}, {"#2", "Zoé", "y"}}, 1, std::nullopt),
      "ID  NAME  PLAYS\n"
      "#1  音楽  x\n"
      "#2  Zoé   y\n");
}

TEST_F(Table, narrowsTheWidestColumnsFirst) {
  EXPECT_EQ(tableOf({{"#1", "short", std::string(200, 'n')}}, 1, 20), "#1  short  nnnnnnnn…\n");
  EXPECT_EQ(tableOf({{"#1", "音楽番組音楽番組", "short"}}, 1, 20), "#1  音楽番組…  short\n");
}

TEST_F(Table, hasNoLineThatIsLongerThanTheWindow) {
  EXPECT_EQ(tableOf({{"#1", "name", "title"}}, 1, 8), "#1  …  …\n");
  EXPECT_EQ(tableOf({{"#1", "name", "title"}}, 1, 6), "#1  ……\n");
  EXPECT_EQ(tableOf({{"#1", "name", "title"}}, 1, 3), "#1…\n");
  EXPECT_EQ(tableOf({{"#1", "name", "title"}}, 1, 0), "…\n");
}

}  // namespace
}  // namespace audrel::cli
