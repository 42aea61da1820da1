#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <system_error>

#include "platform/Foundation.h"
#include "tests/support/TemporaryFolder.h"

/// What every platform tells of files and folders. An implementation is a type with
///   NS::FileManager& fileManager();
namespace audrel::contract {

template <typename Implementation>
class FileManagerContract : public testing::Test {
 protected:
  Implementation implementation;
  NS::FileManager& files = implementation.fileManager();
  support::TemporaryFolder folder;
};

TYPED_TEST_SUITE_P(FileManagerContract);

TYPED_TEST_P(FileManagerContract, aFileOrFolderExistsUnderItsWholeName) {
  EXPECT_TRUE(this->files.fileExists(this->folder.path()));
  std::ofstream(this->folder / "Grüße, 世界.wav") << "x";
  EXPECT_TRUE(this->files.fileExists(this->folder / "Grüße, 世界.wav"));
  EXPECT_FALSE(this->files.fileExists(this->folder / "Grüße, 世界"));
  EXPECT_FALSE(this->files.fileExists(this->folder / "Grüße, 世界.wav" / "below"));
}

TYPED_TEST_P(FileManagerContract, aFileThatWasRemovedExistsNoMore) {
  const auto path = this->folder / "a.wav";
  std::ofstream(path) << "x";
  EXPECT_TRUE(this->files.fileExists(path));
  std::error_code unknown;
  std::filesystem::remove(path, unknown);
  EXPECT_FALSE(this->files.fileExists(path));
}

TYPED_TEST_P(FileManagerContract, nothingIsAtAPathThatNoFileHas) {
  EXPECT_FALSE(this->files.fileExists(""));
  EXPECT_FALSE(this->files.fileExists(this->folder / std::string(5000, 'a')));
  EXPECT_FALSE(this->files.fileExists(this->folder / "no UTF-8: \xFF\xFE"));
}

TYPED_TEST_P(FileManagerContract, aLinkExistsWhereItLeadsToAFile) {
  std::ofstream(this->folder / "a.wav") << "x";
  std::error_code unknown;
  std::filesystem::create_symlink("a.wav", this->folder / "link", unknown);
  EXPECT_TRUE(this->files.fileExists(this->folder / "link"));
  std::filesystem::remove(this->folder / "a.wav", unknown);
  EXPECT_FALSE(this->files.fileExists(this->folder / "link"));
}

TYPED_TEST_P(FileManagerContract, whatExistsTakesItsNameAndNothingTakesNone) {
  std::ofstream(this->folder / "a.wav") << "x";
  EXPECT_TRUE(this->files.nameIsTaken(this->folder / "a.wav"));
  EXPECT_TRUE(this->files.nameIsTaken(this->folder.path()));
  EXPECT_FALSE(this->files.nameIsTaken(this->folder / "b.wav"));
  EXPECT_FALSE(this->files.nameIsTaken(this->folder / "a.wav" / "below"));
}

TYPED_TEST_P(FileManagerContract, theUsersFoldersAreAbsolute) {
  EXPECT_TRUE(this->files.homeDirectoryForCurrentUser().is_absolute());
  const auto downloads = this->files.downloadsDirectory();
  EXPECT_TRUE(!downloads || downloads->is_absolute());
}

REGISTER_TYPED_TEST_SUITE_P(FileManagerContract, aFileOrFolderExistsUnderItsWholeName,
                            aFileThatWasRemovedExistsNoMore, nothingIsAtAPathThatNoFileHas,
                            aLinkExistsWhereItLeadsToAFile,
                            whatExistsTakesItsNameAndNothingTakesNone, theUsersFoldersAreAbsolute);

}  // namespace audrel::contract
