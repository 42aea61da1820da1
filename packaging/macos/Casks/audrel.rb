# For a release: `packaging/macos/make-disk-image --identity NAME --profile NAME Audrel.app` prints the
# two lines that follow. The zeros stand for no release: Homebrew refuses to install with them.
cask "audrel" do
  version "1.0.0"
  sha256 "0000000000000000000000000000000000000000000000000000000000000000"

  url "https://github.com/audrel/audrel/releases/download/v#{version}/Audrel-#{version}.dmg"
  name "Audrel"
  desc "Records what the computer plays, from the menu bar"
  homepage "https://github.com/audrel/audrel"

  auto_updates true
  # Homebrew knows no minor versions; Audrel.app itself asks for 14.2.
  depends_on macos: ">= :sonoma"

  app "Audrel.app"
  binary "#{appdir}/Audrel.app/Contents/MacOS/audrel-record"

  # Quitting completes a recording.
  uninstall quit: "io.github.audrel.Audrel"

  # Recordings stay.
  zap trash: [
    "~/Library/Caches/io.github.audrel.Audrel",
    "~/Library/HTTPStorages/io.github.audrel.Audrel",
    "~/Library/Preferences/io.github.audrel.Audrel.plist",
  ]
end
