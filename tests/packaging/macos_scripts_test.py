#!/usr/bin/env python3
"""What the scripts of packaging/macos do: here, where their tools are missing, and beside tools that
only write down how they are called. What the real tools make of these calls, a Mac has to show."""

import hashlib
import os
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MACOS = ROOT / "packaging" / "macos"
WORKFLOW = ROOT / ".github" / "workflows" / "macos.yml"
CASK = MACOS / "Casks" / "audrel.rb"
DEVELOPER = "Developer ID Application: A. Nother (ABCDE12345)"

# Each script with words that are enough for it, and the tool that it misses first.
SCRIPTS = {
    "sign": (["Some.app"], "codesign"),
    "notarise": (["Some.app"], "xcrun"),
    "make-disk-image": (["Some.app"], "codesign"),
    "make-appcast": (["Audrel-1.0.0.dmg"], "hdiutil"),
    "run": ([], "xcrun"),
    "test": ([], "xcrun"),
}


def call(command, **options):
    return subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          stdin=subprocess.DEVNULL, check=False, **options)


def hash_of(name):
    """Of the certificate of that name."""
    return hashlib.sha1(name.encode()).hexdigest().upper()


def version():
    return re.search(r"project\(Audrel VERSION (\S+)",
                     (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)


class HereTest(unittest.TestCase):
    def test_bash_can_read_every_script(self):
        for script in [*SCRIPTS, "needs.sh"]:
            with self.subTest(script):
                result = call(["bash", "-n", MACOS / script])
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_no_script_uses_what_the_bash_of_macos_lacks(self):
        for path in [*(MACOS / script for script in SCRIPTS), MACOS / "needs.sh"]:
            with self.subTest(path.name):
                self.assertNotRegex(path.read_text(encoding="utf-8"),
                                    r"mapfile|readarray|declare -A|local -n|\$\{\w+(\^|,|@)|&>>|\|&")

    def test_every_script_explains_itself(self):
        for script in SCRIPTS:
            with self.subTest(script):
                result = call([MACOS / script, "--help"])
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assertIn("Usage:", result.stdout)
                self.assertIn("Needs", result.stdout)

    def test_every_script_names_the_tool_that_it_misses(self):
        for script, (words, tool) in SCRIPTS.items():
            with self.subTest(script):
                result = call([MACOS / script, *words])
                self.assertEqual((result.returncode, result.stderr),
                                 (1, f"{script}: this needs macOS' {tool}\n"))

    def test_the_cask_has_the_version_of_the_project(self):
        found = re.search(r'^  version "(.*)"$', CASK.read_text(encoding="utf-8"), re.MULTILINE)
        self.assertEqual(found.group(1), version())

    def test_the_cask_and_the_appcast_download_from_the_same_place(self):
        url = re.search(r'^  url "(.*)/v#\{version\}/Audrel-#\{version\}.dmg"$',
                        CASK.read_text(encoding="utf-8"), re.MULTILINE).group(1)
        self.assertIn(f"releases={url}\n", (MACOS / "make-appcast").read_text(encoding="utf-8"))

    def test_the_workflow_runs_scripts_that_exist(self):
        named = re.findall(r"(?<![\w/])\./(\S+)", WORKFLOW.read_text(encoding="utf-8"))
        self.assertEqual(sorted(named), ["run", "test"])
        for script in named:
            self.assertTrue(os.access(ROOT / script, os.X_OK), script)

    def test_the_workflow_pins_what_it_uses(self):
        text = WORKFLOW.read_text(encoding="utf-8")
        actions = re.findall(r"uses: (.*)", text)
        self.assertGreater(len(actions), 0)
        for action in actions:
            self.assertRegex(action, r"^[\w/-]+@[0-9a-f]{40} # v\d+\.\d+\.\d+$")
        systems = re.search(r"system: \[(.*)\]", text).group(1).split(", ")
        for system in systems:
            self.assertRegex(system, r"^macos-\d+$")
        self.assertIn('HOMEBREW_NO_AUTO_UPDATE: "1"', text)

    def test_the_update_framework_its_feed_and_its_key_go_together(self):
        with tempfile.TemporaryDirectory() as scratch:
            (Path(scratch) / "Sparkle.framework").mkdir()
            given = {"AUDREL_SPARKLE": scratch, "AUDREL_UPDATE_KEY": "key",
                     "AUDREL_UPDATE_FEED": "https://example.invalid/appcast.xml"}
            def configured(options):
                return call(["cmake", *(f"-D{name}={value}" for name, value in options.items()),
                             "-P", MACOS / "Updates.cmake"])
            for options in (given, {}):
                result = configured(options)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
            for name in given:
                for options in ({name: given[name]},
                                {other: given[other] for other in given if other != name}):
                    result = configured(options)
                    self.assertNotEqual(result.returncode, 0, options)
                    self.assertIn("go together", result.stderr)
            for name, value, reason in (
                    ("AUDREL_UPDATE_FEED", "http://example.invalid/appcast.xml", "https"),
                    ("AUDREL_SPARKLE", f"{scratch}/nowhere", "no Sparkle.framework")):
                result = configured({**given, name: value})
                self.assertNotEqual(result.returncode, 0)
                self.assertIn(reason, result.stderr)

    def test_the_documented_release_has_the_update_framework(self):
        text = (ROOT / "docs" / "macos.md").read_text(encoding="utf-8")
        release = re.search(r"A release, .*?```sh\n(.*?)```", text, re.DOTALL).group(1)
        for option in ("-DAUDREL_SPARKLE=", "-DAUDREL_UPDATE_FEED=https://", "-DAUDREL_UPDATE_KEY="):
            self.assertIn(option, release)

    def test_on_a_mac_the_scripts_of_the_top_are_those_of_this_folder(self):
        with tempfile.TemporaryDirectory() as scratch:
            uname = Path(scratch) / "uname"
            uname.write_text("#!/bin/sh\necho Darwin\n", encoding="utf-8")
            uname.chmod(0o755)
            path = f"{scratch}:{os.environ['PATH']}"
            for script in ("run", "test"):
                result = call([ROOT / script, "--help"], env={**os.environ, "PATH": path})
                self.assertEqual(result.stdout, call([MACOS / script, "--help"]).stdout)
                self.assertNotEqual(result.stdout, call([ROOT / script, "--help"]).stdout)


    def test_a_framework_is_embedded_as_it_is_with_its_links(self):
        with tempfile.TemporaryDirectory() as scratch:
            given = Path(scratch) / "given"
            framework = given / "Sparkle.framework"
            (framework / "Versions" / "B").mkdir(parents=True)
            (framework / "Versions" / "B" / "Sparkle").write_text("code", encoding="utf-8")
            (framework / "Versions" / "Current").symlink_to("B")
            (framework / "Sparkle").symlink_to("Versions/Current/Sparkle")
            parts = [given / name for name in ("program", "recorder", "plist", "icon")]
            for part in parts:
                part.write_text(part.name, encoding="utf-8")
            bundle = Path(scratch) / "Audrel.app"
            for _ in ("the first time", "again"):
                result = call([MACOS / "make-bundle", bundle, *parts, framework])
                self.assertEqual((result.returncode, result.stderr), (0, ""))
            embedded = bundle / "Contents" / "Frameworks" / "Sparkle.framework"
            self.assertEqual(os.readlink(embedded / "Versions" / "Current"), "B")
            self.assertEqual(os.readlink(embedded / "Sparkle"), "Versions/Current/Sparkle")
            self.assertEqual((embedded / "Sparkle").read_text(encoding="utf-8"), "code")
            self.assertEqual(sorted(os.listdir(embedded)), ["Sparkle", "Versions"])


class BesideRecordedToolsTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.tools = self.scratch / "tools"
        self.tools.mkdir()
        self.calls = self.scratch / "calls"
        self.tool("uname", "echo Darwin")
        for name in ("codesign", "ditto", "spctl"):
            self.recorded(name)
        self.keychain()
        # A space and a quote: names are the user's.
        self.application = self.scratch / "it's one folder" / "Audrel.app"
        contents = self.application / "Contents"
        for folder in ("MacOS", "Frameworks/Sparkle.framework/Versions/B/XPCServices/Installer.xpc",
                       "Frameworks/Sparkle.framework/Versions/B/Updater.app"):
            (contents / folder).mkdir(parents=True)
        (contents / "Frameworks/Sparkle.framework/Versions/B/Autoupdate").touch()
        with open(contents / "Info.plist", "wb") as file:
            plistlib.dump({"CFBundleShortVersionString": "3.2.1", "SUPublicEDKey": "the key",
                           "SUFeedURL": "https://example.invalid/appcast.xml"}, file)

    def tool(self, name, commands, folder=None):
        path = (folder or self.tools) / name
        path.write_text(f"#!/bin/sh\n{commands}\n", encoding="utf-8")
        path.chmod(0o755)

    def recorded(self, name, commands="", folder=None):
        self.tool(name, f"""{{ printf '%s' {name}; printf '|%s' "$@"; echo; }} >>"{self.calls}"
{commands}""", folder)

    def keychain(self, *valid, others=()):
        """`others` are certificates that nobody vouches for. Those that are valid are listed twice
        when all are asked for."""
        def lines(names, remark=""):
            return "\n".join(f"echo '  1) {hash_of(name)} \"{name}\"{remark}'" for name in names) or ":"
        self.tool("security", f"""if [ "$2" != -v ]; then
{lines(valid)}
{lines(others, " (CSSMERR_TP_NOT_TRUSTED)")}
fi
{lines(valid)}""")

    def notary(self, answer):
        """Stapling changes an image."""
        self.recorded("xcrun", f"""if [ "$2" = submit ]; then
  cat <<'END'
{plistlib.dumps({"id": "the-submission", "status": answer}).decode()}
END
elif [ "$2" = staple ] && [ -f "$3" ]; then
  echo ticket >>"$3"
fi""")
        self.tool("plutil", """python3 -c '
import plistlib, sys
print(plistlib.load(open(sys.argv[2], "rb"))[sys.argv[1]])' "$2" "$6" """)

    def call(self, script, *words):
        path = f"{self.tools}:{os.environ['PATH']}"
        return call([MACOS / script, *words], cwd=self.scratch, env={"PATH": path})

    def made_calls(self):
        if not self.calls.exists():
            return []
        text = self.calls.read_text(encoding="utf-8").replace(str(self.application), "APP")
        return [line.split("|") for line in text.splitlines()]

    def signed(self):
        return [words[-1] for words in self.made_calls() if "--sign" in words]

    def test_inner_code_is_signed_before_what_holds_it(self):
        self.keychain(DEVELOPER)
        result = self.call("sign", self.application)
        self.assertEqual(result.returncode, 0, result.stderr)
        framework = "APP/Contents/Frameworks/Sparkle.framework"
        self.assertEqual(self.signed(), [
            f"{framework}/Versions/B/XPCServices/Installer.xpc",
            f"{framework}/Versions/B/Autoupdate",
            f"{framework}/Versions/B/Updater.app",
            framework,
            "APP/Contents/MacOS/audrel-record",
            "APP"])
        self.assertEqual(self.made_calls()[-1][:3], ["codesign", "--verify", "--strict"])

    def signing_words(self, *options):
        """How the application itself is signed."""
        result = self.call("sign", *options, self.application)
        self.assertEqual(result.returncode, 0, result.stderr)
        command, force, sign, *words, application = self.made_calls()[-2]
        self.assertEqual([command, force, sign, application], ["codesign", "--force", "--sign", "APP"])
        return words

    def test_an_identity_is_known_by_its_hash_or_name_and_signs_as_its_kind_needs(self):
        development, old = "Audrel Development", "Developer ID Application: A. Nother (expired)"
        as_release = [hash_of(DEVELOPER), "--timestamp", "--options", "runtime"]
        as_development = [hash_of(development), "--timestamp=none"]
        for identity, valid, others, words in (
                (None, [DEVELOPER], [development], as_release),
                (None, [], [development], as_development),
                (hash_of(DEVELOPER), [DEVELOPER], [development], as_release),
                (hash_of(DEVELOPER).lower(), [DEVELOPER], [development], as_release),
                (hash_of(development), [DEVELOPER], [development], as_development),
                ("A. Nother", [DEVELOPER], [development], as_release),
                ("(ABCDE12345)", [DEVELOPER], [development], as_release),
                ("Developer ID Application", [DEVELOPER], [development], as_release),
                # A whole name goes before names that hold it, and what is valid before what is not.
                (development, [], [development, f"{development} of old"], as_development),
                ("A. Nother", [DEVELOPER], [old], as_release)):
            with self.subTest(identity=identity, others=others):
                self.keychain(*valid, others=others)
                options = [] if identity is None else ["--identity", identity]
                self.assertEqual(self.signing_words(*options), words)

    def test_a_certificate_is_found_among_more_than_a_pipe_holds(self):
        self.keychain(others=["Audrel Development", *(f"Somebody else {i}" for i in range(3000))])
        self.signing_words()
        self.signing_words("--identity", hash_of("Audrel Development"))

    def test_nothing_is_signed_without_an_identity(self):
        self.keychain(others=["Somebody else"])
        result = self.call("sign", self.application)
        self.assertEqual(result.returncode, 3)
        self.assertIn("no identity", result.stderr)
        self.assertEqual(self.made_calls(), [])

    def test_of_several_developer_ids_the_user_chooses(self):
        self.keychain(DEVELOPER, "Developer ID Application: B (X)")
        result = self.call("sign", self.application)
        self.assertEqual(result.returncode, 1)
        self.assertIn(DEVELOPER, result.stderr)
        self.assertEqual(self.made_calls(), [])
        self.call("sign", "--identity", "Developer ID Application: B (X)", self.application)
        self.assertIn(hash_of("Developer ID Application: B (X)"), self.made_calls()[-2])

    def test_an_identity_that_may_be_several_is_refused(self):
        other = "Developer ID Application: A. Nother (FGHIJ67890)"
        self.keychain(DEVELOPER, other)
        result = self.call("sign", "--identity", "A. Nother", self.application)
        self.assertEqual(result.returncode, 1)
        for name in (DEVELOPER, other):
            self.assertIn(f"{hash_of(name)} {name}", result.stderr)
        self.assertEqual(self.made_calls(), [])

    def test_a_renewed_certificate_is_told_from_its_old_one_by_its_hash(self):
        self.tool("security", f"""for hash in {"A" * 40} {"B" * 40}; do
  echo "  1) $hash \\"{DEVELOPER}\\""
done""")
        result = self.call("sign", self.application)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{'A' * 40} {DEVELOPER}\n{'B' * 40} {DEVELOPER}\n", result.stderr)
        self.assertEqual(self.made_calls(), [])
        self.assertEqual(self.signing_words("--identity", "B" * 40),
                         ["B" * 40, "--timestamp", "--options", "runtime"])

    def test_an_identity_that_is_not_there_is_refused(self):
        self.keychain(DEVELOPER)
        for text in ("Developer ID Application: B (X)", "0" * 40, "*"):
            result = self.call("sign", "--identity", text, self.application)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f'no identity "{text}"', result.stderr)
        self.assertEqual(self.made_calls(), [])

    def test_ad_hoc_asks_no_keychain(self):
        self.tool("security", "exit 1")
        for words in (["--ad-hoc"], ["--identity", "-"]):
            self.assertEqual(self.signing_words(*words), ["-", "--timestamp=none"])

    def test_a_folder_that_is_no_application_is_left_alone(self):
        self.assertIn("no application", self.call("sign", self.tools).stderr)
        self.assertEqual(self.made_calls(), [])

    def test_nothing_is_built_without_a_compiler(self):
        self.tool("xcrun", "exit 72")
        for name in ("cmake", "ninja", "ctest"):
            self.recorded(name)
        for script in ("run", "test"):
            result = self.call(script)
            self.assertEqual((result.returncode, result.stderr),
                             (1, f"{script}: this needs Xcode's command-line tools, which "
                                 '"xcode-select --install" gets\n'))
        self.assertEqual(self.made_calls(), [])

    def test_notarising_needs_a_profile(self):
        self.notary("Accepted")
        result = self.call("notarise", self.application)
        self.assertEqual(result.returncode, 1)
        self.assertIn("--profile NAME", result.stderr)
        self.assertNotIn("submit", self.calls.read_text(encoding="utf-8"))

    def test_what_apple_accepts_is_stapled_and_verified(self):
        self.notary("Accepted")
        result = self.call("notarise", "--profile", "my own", self.application)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([words[:3] for words in self.made_calls()[-4:]], [
            ["xcrun", "notarytool", "submit"],
            ["xcrun", "stapler", "staple"],
            ["xcrun", "stapler", "validate"],
            ["spctl", "--assess", "--type"]])
        self.assertIn("my own", self.made_calls()[-4])

    def test_what_apple_refuses_is_not_stapled(self):
        self.notary("Invalid")
        result = self.call("notarise", "--profile", "mine", self.application)
        self.assertEqual(result.returncode, 1)
        self.assertIn("Invalid", result.stderr)
        self.assertEqual(self.made_calls()[-1],
                         ["xcrun", "notarytool", "log", "--keychain-profile", "mine",
                          "the-submission"])

    def make_image(self, *options):
        self.notary("Accepted")
        self.recorded("hdiutil", 'for last; do :; done; echo image >"$last"')
        self.tool("shasum", 'sha256sum "$3"')
        return self.call("make-disk-image", "--identity", DEVELOPER, *options, self.application)

    def test_the_checksum_is_that_of_the_image(self):
        result = self.make_image("--profile", "mine")
        self.assertEqual(result.returncode, 0, result.stderr)
        image = self.application.parent / "Audrel-3.2.1.dmg"
        self.assertEqual(image.read_text(encoding="utf-8"), "image\nticket\n")
        checksum = hashlib.sha256(image.read_bytes()).hexdigest()
        self.assertTrue(result.stdout.endswith(f'  version "3.2.1"\n  sha256 "{checksum}"\n'))

    def test_an_image_that_will_change_has_no_checksum_yet(self):
        result = self.make_image()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertNotIn('sha256 "', result.stdout)

    def test_an_image_that_is_there_is_kept(self):
        image = self.application.parent / "Audrel-3.2.1.dmg"
        image.write_text("precious", encoding="utf-8")
        self.assertEqual(self.make_image().returncode, 1)
        self.assertEqual(image.read_text(encoding="utf-8"), "precious")

    def without_in_info(self, key, instead=None):
        path = self.application / "Contents" / "Info.plist"
        plist = plistlib.loads(path.read_bytes())
        del plist[key]
        if instead is not None:
            plist[key] = instead
        path.write_bytes(plistlib.dumps(plist))

    def test_what_could_never_update_itself_is_not_given_away(self):
        def without_framework():
            shutil.rmtree(self.application / "Contents" / "Frameworks" / "Sparkle.framework")
        for damage, option in (
                (lambda: self.without_in_info("SUPublicEDKey"), "-DAUDREL_UPDATE_KEY"),
                (lambda: self.without_in_info("SUFeedURL", "http://example.invalid/appcast.xml"),
                 "-DAUDREL_UPDATE_FEED=https://"),
                (lambda: self.without_in_info("SUFeedURL"), "-DAUDREL_UPDATE_FEED=https://"),
                (without_framework, "-DAUDREL_SPARKLE")):
            damage()
            result = self.make_image("--profile", "mine")
            self.assertEqual(result.returncode, 1)
            self.assertIn(option, result.stderr)
            self.assertEqual([words for words in self.made_calls() if words[0] == "hdiutil"], [])

    def make_appcast(self, generator):
        self.recorded("hdiutil")
        self.notary("Accepted")
        sparkle = self.scratch / "my sparkle"
        (sparkle / "bin").mkdir(parents=True)
        self.recorded("generate_keys", folder=sparkle / "bin")
        self.recorded("generate_appcast", generator, folder=sparkle / "bin")
        image = self.scratch / "Audrel-3.2.1.dmg"
        image.write_text("image", encoding="utf-8")
        return self.call("make-appcast", "--sparkle", sparkle, image, self.scratch / "cast.xml")

    def test_the_appcast_gets_the_new_version(self):
        (self.scratch / "cast.xml").write_text("before\n", encoding="utf-8")
        result = self.make_appcast('echo "$2Audrel-3.2.1.dmg" >>"$3/appcast.xml"')
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual((self.scratch / "cast.xml").read_text(encoding="utf-8"),
                         "before\nhttps://github.com/audrel/audrel/releases/download/v3.2.1/"
                         "Audrel-3.2.1.dmg\n")

    def test_an_appcast_without_the_new_version_is_not_taken(self):
        (self.scratch / "cast.xml").write_text("before\n", encoding="utf-8")
        result = self.make_appcast('echo nothing >"$3/appcast.xml"')
        self.assertEqual(result.returncode, 1)
        self.assertEqual((self.scratch / "cast.xml").read_text(encoding="utf-8"), "before\n")

    def test_only_what_a_mac_would_open_is_listed(self):
        (self.scratch / "cast.xml").write_text("before\n", encoding="utf-8")
        self.make_appcast("exit 1")
        calls = [" ".join(words) for words in self.made_calls()]
        image = self.scratch / "Audrel-3.2.1.dmg"
        wanted = [f"codesign --verify --strict {image}", f"xcrun stapler validate {image}",
                  f"spctl --assess --type open --context context:primary-signature --verbose=2 {image}"]
        self.assertEqual(calls[-4:-1], wanted)
        self.assertTrue(calls[-1].startswith("generate_appcast"))
        for number, call_made in enumerate(wanted):
            tool = call_made.split()[0]
            self.calls.unlink()
            kept = (self.tools / tool).read_text(encoding="utf-8")
            self.recorded(tool, "exit 1")
            result = self.call("make-appcast", "--sparkle", self.scratch / "my sparkle", image,
                               self.scratch / "cast.xml")
            (self.tools / tool).write_text(kept, encoding="utf-8")
            self.assertEqual(result.returncode, 1)
            self.assertIn(f'"{image}"', result.stderr)
            self.assertEqual([" ".join(words) for words in self.made_calls()[1:]],
                             wanted[:number + 1])
        self.assertEqual((self.scratch / "cast.xml").read_text(encoding="utf-8"), "before\n")

    def test_an_appcast_needs_the_tools_of_sparkle(self):
        self.recorded("hdiutil")
        self.notary("Accepted")
        result = self.call("make-appcast", "--sparkle", self.scratch, "Audrel-3.2.1.dmg")
        self.assertEqual(result.returncode, 1)
        self.assertIn("bin/generate_appcast", result.stderr)


if __name__ == "__main__":
    unittest.main()
