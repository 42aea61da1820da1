"""Why the journal of the frameworks of tests/macos/frameworks reads otherwise than the journal of
tests/fakes, one difference each.

An explanation rewrites calls, from the words of the interface into those of macOS, or says that a
call stands on one side alone. It must say what it takes as exactly as it can: whatever no explanation
takes has to be equal.
"""
import dataclasses
import re

QUEUE = "io.github.audrel.Audrel.writer"


@dataclasses.dataclass(frozen=True)
class Explanation:
    name: str
    reason: str
    rewrites: tuple[tuple[str, str], ...] = ()  # pattern within a call of the interface, replacement
    only_interface: str = r"(?!)"  # pattern of a whole call without counterpart on macOS
    stories: str = r".*"  # those that it holds for

    def rewritten(self, call):
        for pattern, replacement in self.rewrites:
            call = re.sub(pattern, replacement, call)
        return call


EXPLANATIONS = [
    Explanation(
        "status",
        "The interface's journal names the status that a call returned; that of macOS tells the "
        "number alone.",
        ((r"-> status ", "-> "),)),
    Explanation(
        "nil",
        "What a framework could not make is `nil` there.",
        ((r"^(AVAudioFormat|AVAudioPCMBuffer)(\(.*\)) -> nothing$", r"\1\2 -> nil"),)),
    Explanation(
        "logger",
        "A logger of the interface is an `os_log_t`.",
        ((r"^makeLogger\(", "os_log_create("),)),
    Explanation(
        "makeQueue",
        "A queue of the interface is a serial dispatch queue: the quality of service 25 is "
        "`QOS_CLASS_USER_INITIATED`, the frequency 0 `DISPATCH_AUTORELEASE_FREQUENCY_INHERIT`.",
        ((r'^makeQueue\("([\w.]+)", userInitiated\)$',
          r"dispatch_queue_create(\1, qos 25, autorelease frequency 0)"),)),
    Explanation(
        "queue",
        "On macOS a queue is known by its label, and what is handed to it goes through the "
        "functions of the dispatch library.",
        ((r"^writerQueue\.async\(", f"dispatch_async_f({QUEUE}, "),
         (r"^writerQueue\.sync (begins|ends)$", rf"dispatch_sync_f({QUEUE}) \1"),
         (r"^writerQueue runs item ", f"{QUEUE} runs item "))),
    Explanation(
        "tap",
        "The interface names the kind of a tap as macOS names the initialiser; the framework's "
        "journal tells which one was called.",
        ((r"\(stereoMixdownOfProcesses \[", "(stereo mixdown of ["),
         (r"\(stereoGlobalTapButExcludeProcesses \[", "(stereo global tap but ["))),
    Explanation(
        "properties",
        "Mute behaviour and name are properties, set one after the other once the tap's "
        "description was made.",
        ((r'muteBehavior (\d+), name "', r'muteBehavior = \1, name = "'),)),
    Explanation(
        "number",
        "The processes of a tap are NSNumbers, and the journal of macOS tells what each holds.",
        ((r"(stereo mixdown of) \[(\d+)\]", r"\1 [u32 \2]"),)),
    Explanation(
        "Boolean",
        "So are the truth values in the description of an aggregate device.",
        ((r"\b(private|stacked|tapautostart|drift): (true|false)", r"\1: Boolean \2"),)),
    Explanation(
        "address",
        "The journal of macOS writes the four letters of selector and scope without quotes.",
        ((r"'(....)'/'(....)'/", r"\1/\2/"),)),
    Explanation(
        "size",
        "The journal of macOS tells the unit of the room that a property may take.",
        ((r", no qualifier, size (\d+)", r", no qualifier, \1 bytes"),)),
    Explanation(
        "text",
        "The interface reads a text into a text, and tells what that held before. Core Audio "
        "writes a reference to a CFString: 8 bytes.",
        ((r'(, 8 bytes), text from ""', r"\1"),)),
    Explanation(
        "UID",
        "Each system makes up its own UIDs of taps and devices.",
        ((r'"fake-tap-(\d+)"', r'"tap-\1"'), (r'"fake-output"', '"output-51"'))),
    Explanation(
        "UUID",
        "Each system makes up its own UUIDs. Here both count: from 1, and from ABCD.",
        ((r"^uuidString\(\) ->", "NSUUID.UUIDString ->"),
         (r'"00000000-0000-4000-8000-000000000001"', '"00000000-0000-4000-8000-00000000ABCD"'),
         (r'"00000000-0000-4000-8000-000000000002"', '"00000000-0000-4000-8000-00000000ABCE"'))),
    Explanation(
        "unknown format",
        "A format is unknown in different ways: the portable fake is told to make none of a format "
        "that is good, while the tap on macOS describes one of the kind 0, and AVAudioFormat takes "
        "none of that kind.",
        ((r"(\(101, tfmt/glob/0, .*) -> 0, 48000 Hz", r"\1 -> 0, 0 at 48000 Hz"),
         (r"^AVAudioFormat\(streamDescription\) -> nil",
          "AVAudioFormat(0 at 48000 Hz, 2 channels, 8 bytes a frame) -> nil")),
        stories=r"engine-start-fails-no-format"),
    Explanation(
        "kind of format",
        "The journal of macOS tells the kind of a format too: `lpcm`, linear PCM.",
        ((r"(, tfmt/glob/0, .*) -> 0, 48000 Hz", r"\1 -> 0, lpcm at 48000 Hz"),)),
    Explanation(
        "description",
        "The interface's journal tells that a format is made from the description that was read; "
        "that of macOS tells what arrived in AVAudioFormat.",
        ((r"^AVAudioFormat\(streamDescription\)",
          "AVAudioFormat(lpcm at 48000 Hz, 2 channels, 8 bytes a frame)"),)),
    Explanation(
        "constant",
        "A file's settings go by the framework's constants. The framework of the tests gives them "
        "values that are not their names, so that a name in a constant's place would show.",
        ((r"(?<=[{ ])(AV\w+): (?=u32|integer|double|Boolean)", r"key of \1: "),)),
    Explanation(
        "decimals",
        "The journals write a double with and without decimals.",
        ((r"(key of AVSampleRateKey: double \d+)\b", r"\1.000000"),)),
    Explanation(
        "write",
        "AVAudioFile answers a write with YES or NO.",
        ((r"^file\.write\((\d+ frames)\) -> ok$", r"AVAudioFile.writeFromBuffer: \1 -> YES"),
         (r"^file\.write\((\d+ frames)\) -> error",
          r"AVAudioFile.writeFromBuffer: \1 -> NO, error"))),
    Explanation(
        "close",
        "The interface's journal tells the name of a file that is closed, that of macOS its path.",
        ((r"^file closed: (new\.\w+)$", r"AVAudioFile closed: /recordings/\1"),
         (r"^file closed: (audio-[\w-]+\.\w+)$",
          r"AVAudioFile closed: /Users/test/Downloads/\1"))),
    Explanation(
        "clock",
        "The clock of macOS is the C++ library's and asks no framework. That it was read at the "
        "right moment shows in the elapsed time in the log.",
        only_interface=r"now\(\) -> [\d.]+ s"),
    Explanation(
        "inside",
        "What the engine keeps to itself is read out of it where the engine's own tests run. It is "
        "the same code on macOS, and no framework sees it.",
        only_interface=r"the engine's (tap|aggregate device): \d+|"
                       r"the engine keeps a (writer format|stream description): (yes|no)"),
    Explanation(
        "size before",
        "The interface's journal tells what the caller's size was before it was asked for.",
        ((r"^(AudioObjectGetPropertyDataSize\(.*, no qualifier), from 0\)", r"\1)"),)),
    Explanation(
        "application",
        "The interface's application is NSApplication.",
        ((r"^application\.setActivationPolicy\((\d)\)$", r"NSApplication.setActivationPolicy: \1"),
         (r"^application\.run\(\) begins$", "NSApplication.run"),
         (r"^application\.terminate\(\)$", "NSApplication.terminate:"))),
    Explanation(
        "end",
        "On macOS `terminate:` ends the process, and `run` does not return.",
        only_interface=r"application\.run\(\) ends"),
    Explanation(
        "delegate",
        "Delegates on macOS are objects of Objective-C. The application's is one of the adapter's; a "
        "menu is its own, and passes on that it opens.",
        ((r"^application\.delegate = delegate$", "NSApplication.delegate = an object"),
         (r"^(menu \d+)\.delegate = delegate$", r"\1.delegate = itself"))),
    Explanation(
        "menu bar",
        "The status item and its font are asked for by the methods of AppKit.",
        ((r"^statusItem\(withLength -1\)$", "statusItemWithLength: -1"),
         (r"^button\.font = monospacedDigitSystemFont\(size 12, weight 0\)$",
          "button.font = monospaced digits, 12 pt, weight 0"))),
    Explanation(
        "menu",
        "A menu is made with a title, which is empty.",
        ((r"^NSMenu\(\) -> ", 'NSMenu.initWithTitle: "" -> '),)),
    Explanation(
        "item",
        "An item is added by a method of AppKit. One without a key has an empty one there.",
        ((r"^(menu \d+)\.addItem\((.*)\)$", r"\1.addItem: \2"),
         (r'^(menu \d+\.addItem: "[^"]*"), no key, ', r'\1, key "", '))),
    Explanation(
        "represents",
        "What an item represents is the program's own. It lies in an object of the adapter's, and "
        "AppKit does not look into that: that the same comes back is seen in `AppKitTest`.",
        ((r', represents process \d+ "[^"]*" ("[^"]*"|without bundle identifier)$', ""),)),
    Explanation(
        "image",
        "Images are made and drawn by the methods of AppKit.",
        ((r'^imageWithSystemSymbolName\("([\w.]+)"\) ->',
          r"NSImage.imageWithSystemSymbolName: \1 ->"),
         (r"^(image \d+)\.withSymbolConfiguration\(pointSize 14, weight 0\) ->",
          r"\1.imageWithSymbolConfiguration: 14 pt, weight 0 ->"),
         (r"^NSImage\((\d+ x \d+)\) ->", r"NSImage.initWithSize: \1 ->"),
         (r"^(image \d+\.(?:un)?lockFocus)\(\)$", r"\1"),
         (r"^(image \d+\.drawInRect)\((0, 0, \d+ x \d+)\)$", r"\1: \2"),
         (r"^fillRect\((0, 0, \d+ x \d+)\) with operation 5$",
          r"NSRectFillUsingOperation(\1, 5)"))),
    Explanation(
        "size of a symbol",
        "Each system's symbols have a size of their own.",
        ((r"^(NSImage\.initWithSize: |image \d+\.drawInRect: 0, 0, |"
          r"NSRectFillUsingOperation\(0, 0, )18 x 16", r"\g<1>17 x 15"),)),
    Explanation(
        "colour",
        "The colours are class properties of NSColor.",
        ((r"^systemRedColor\.set\(\)$", "NSColor red is set"),
         (r"^systemOrangeColor\.set\(\)$", "NSColor orange is set"))),
    Explanation(
        "updater",
        "The updater can be given delegates, of which the interface does not know. It gets none.",
        ((r"^(SPUStandardUpdaterController\(startingUpdater true)\)$", r"\1, no delegates)"),)),
    Explanation(
        "defaults",
        "The user's defaults are NSUserDefaults.",
        ((r'^stringForKey\("(\w+)"\) -> ', r"NSUserDefaults \1 -> "),
         (r'^setString\((".*"), "(\w+)"\)$', r"NSUserDefaults \2 = \1"))),
    Explanation(
        "Downloads",
        "The users of the two systems are not the same, nor are their folders.",
        ((r"^/home/listener/Downloads\b", "/Users/test/Downloads"),
         (r"(?<=\")/home/listener/Downloads\b", "/Users/test/Downloads"))),
    Explanation(
        "files",
        "The folder is asked of NSFileManager by the numbers of \"Downloads\" and of \"the user's\", "
        "and so is whether a file exists; whether a name is taken is the same question there.",
        ((r"^downloadsDirectory\(\) -> ", "NSFileManager.URLsForDirectory: 15 inDomains: 1 -> "),
         (r"^(?:fileExists|nameIsTaken)\((\".*\")\) -> ", r"NSFileManager.fileExistsAtPath: \1 -> "))),
    Explanation(
        "running",
        "A running application is found by NSRunningApplication.",
        ((r"^runningApplication\((\d+)\)$", r"NSRunningApplication(\1)"),)),
    Explanation(
        "timer",
        "A timer of the run loop is an NSTimer.",
        ((r"^scheduleRepeatingTimer\(1 s\) -> ", "NSTimer every 1.000000 s -> "),
         (r"^(timer \d+)\.invalidate\(\)$", r"\1 invalidated"))),
    Explanation(
        "Finder",
        "Files are shown by NSWorkspace, which takes URLs.",
        ((r'^workspace\.activateFileViewerSelecting\("([^"]*)"\)$',
          r"NSWorkspace.activateFileViewerSelectingURLs: \1"),)),
]
