# What the scripts of this folder ask for before they touch anything. Sourced, with bash 3.2 or
# later: macOS has no newer one of its own.

# stop TEXT: says why this script goes no further.
stop() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

# misused TEXT: the same for words of the command line that make no sense.
misused() {
  printf '%s: %s Try --help.\n' "${0##*/}" "$1" >&2
  exit 2
}

# needMacTools TOOL...: stops unless this is a Mac that has all of them.
needMacTools() {
  local tool
  for tool in "$@"; do
    [[ $(uname -s) == Darwin ]] || stop "this needs macOS' $tool"
    command -v "$tool" >/dev/null || stop "this needs $tool, which is not installed"
  done
}

# needCompiler: stops unless Xcode's command-line tools are there; xcrun alone is on every Mac.
needCompiler() {
  xcrun --find clang++ >/dev/null 2>&1 ||
    stop "this needs Xcode's command-line tools, which \"xcode-select --install\" gets"
}

# needBundle FOLDER: stops unless it is an application.
needBundle() {
  [[ -f $1/Contents/Info.plist ]] || stop "\"$1\" is no application: it has no Contents/Info.plist"
}

# needTicket APPLICATION-OR-IMAGE: stops unless Apple's ticket is stapled to it and a Mac would open it.
needTicket() {
  local -a assessment=(--type execute)
  if [[ ! -d $1 ]]; then
    assessment=(--type open --context context:primary-signature)
  fi
  xcrun stapler validate "$1" || stop "\"$1\" has no ticket of Apple's: use notarise first"
  spctl --assess "${assessment[@]}" --verbose=2 "$1" || stop "a Mac would not open \"$1\""
}
