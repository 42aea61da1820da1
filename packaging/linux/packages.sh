# The Debian packages of ./run and ./test, and their installation. Sourced, with bash. The names are
# the same in Debian 12 and 13, except for JACK's programs.

# To build the program and to run it once.
runPackages=(
  g++                    # compiler
  cmake                  # build system, 3.25 or later
  ninja-build            # what CMake drives
  pkg-config             # finds the libraries below
  libpipewire-0.3-dev    # capture
  libavcodec-dev         # AAC encoder, with libavutil-dev
  libglib2.0-dev         # desktop entries: names of applications
  libgtk-3-dev           # alerts
  libicu-dev             # sorting by the user's language
  libsystemd-dev         # journal
  uuid-dev               # identifiers
  pipewire               # the demo's private server
  ffmpeg                 # facts and waveform of the recording
)

# For a private desktop session, where there is no desktop.
panelPackages=(
  xvfb                   # a display that nobody sees
  dbus                   # its session bus
  xfce4-panel            # a panel with a status area
  librsvg2-common        # its reader of icons
  hicolor-icon-theme     # the folders in which it looks for ours
  adwaita-icon-theme     # icons of the alerts
  fonts-dejavu-core      # letters
  xdotool                # the user
  libglib2.0-bin         # calls on the bus
  python3                # the scripts that bring it all together
)

# Beyond those, for everything that CI runs.
testPackages=(
  clang                  # second compiler, and the sanitizers
  libclang-rt-dev        # runtimes of the sanitizers
  llvm                   # names in the sanitizers' reports
  clang-format-19        # layout of the sources, the same on each release
  clang-tidy             # static analysis
  libgtest-dev           # tests
  libgmock-dev           # tests
  libbenchmark-dev       # benchmarks
  libsndfile1-dev        # a reader of WAV that is not FFmpeg
  sox                    # another
  gstreamer1.0-tools     # a reader of M4A that is not FFmpeg
  gstreamer1.0-plugins-good  # its demuxer
  locales                # a language with a decimal comma
  mandoc                 # checks the manual pages
  git                    # repositories for the tests of commands that go by commits
  e2fsprogs              # disks for the trial of power cuts
  xfsprogs               # others
  btrfs-progs            # others
  fish                   # completes the words of a command line, as bash does
  desktop-file-utils     # checks the desktop entry
  appstream              # checks the metainfo
  libxml2-utils          # checks the icons' drawings
  librsvg2-bin           # renders them
  clang-19               # builds for macOS, and Objective-C++ for Linux
  lld-19                 # links for macOS
  llvm-19                # joins and inspects what was linked
  libclang-rt-19-dev     # runtimes of that compiler's sanitizers
  libc++1                # what programs for macOS are linked to, to run one here
  wireplumber            # the desktop's session manager
  pipewire-pulse         # PulseAudio clients
  pipewire-bin           # pw-play and its kin, clients that are not ours
  pulseaudio-utils       # paplay, a client that is not ours
  libjack-jackd2-dev     # a player on JACK
  pipewire-jack          # pw-jack, which has it play through PipeWire
)

# JACK's own programs, clients that are not ours: part of the server's package up to Debian 12.
# $1: what stands for /etc/os-release.
jackProgramsPackage() {
  if [[ "$(. "${1:-/etc/os-release}" && printf '%s %s' "${ID-}" "${VERSION_ID-}")" == 'debian 12' ]]; then
    printf 'jackd2\n'
  else
    printf 'jack-example-tools\n'
  fi
}
testPackages+=("$(jackProgramsPackage)")

# What shows that a package's content is there, wherever it came from: a command, or a library as
# pkg-config calls it, and the least version that Audrel is built with.
declare -A signs=(
  [g++]='command g++ 12'
  [cmake]='command cmake 3.25'
  [ninja-build]='command ninja'
  [pkg-config]='command pkg-config'
  [libpipewire-0.3-dev]='library libpipewire-0.3 0.3.65'
  [libavcodec-dev]='library libavcodec 59.37'  # FFmpeg 5.1
  [libglib2.0-dev]='library gio-unix-2.0'
  [libgtk-3-dev]='library gtk+-3.0'
  [libicu-dev]='library icu-i18n'
  [libsystemd-dev]='library libsystemd'
  [uuid-dev]='library uuid'
  [pipewire]='command pipewire'
  [ffmpeg]='command ffmpeg'
  [xvfb]='command Xvfb'
  [dbus]='command dbus-daemon'
  [xfce4-panel]='command xfce4-panel'
  [xdotool]='command xdotool'
  [libglib2.0-bin]='command gdbus'
  [python3]='command python3'
)

# Where every warning is known, so that ./test makes errors of them: elsewhere they stop nobody.
provenSystems=(
  'debian 12, g++ 12, clang 14'
  'debian 13, g++ 14, clang 19'
)

# The same words for this machine. $1: what stands for /etc/os-release.
thisSystem() {
  local release gcc clang
  release=$(. "${1:-/etc/os-release}" && printf '%s %s' "${ID-}" "${VERSION_ID-}")
  gcc=$(g++ -dumpversion)
  clang=$(clang++ -dumpversion)
  printf '%s, g++ %s, clang %s\n' "$release" "${gcc%%.*}" "${clang%%.*}"
}

# isProven SYSTEM
isProven() {
  local system
  for system in "${provenSystems[@]}"; do
    if [[ $system == "$1" ]]; then
      return 0
    fi
  done
  return 1
}

# Prints those of the packages "$@" that are not installed, a line each.
missingPackages() {
  local package
  for package in "$@"; do
    if [[ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" != 'install ok installed' ]]; then
      printf '%s\n' "$package"
    fi
  done
}

# Runs "$@" as root: directly, else with sudo.
asRoot() {
  if [[ $EUID -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    printf 'To install packages, run this as root or install sudo.\n' >&2
    return 1
  fi
}

# isAtLeast VERSION COMMAND: whether the command says that it has that version or a later one.
isAtLeast() {
  [[ "$("$2" --version)" =~ [0-9]+(\.[0-9]+)* ]] &&
    printf '%s\n' "$1" "${BASH_REMATCH[0]}" | sort --version-sort --check=quiet
}

# isThere PACKAGE: whether what it holds is there. One that has no sign cannot be judged, and passes.
isThere() {
  local kind name least
  read -r kind name least <<<"${signs[$1]-}"
  case $kind in
    command) command -v "$name" >/dev/null && { [[ -z $least ]] || isAtLeast "$least" "$name"; } ;;
    library) pkg-config --exists "$name${least:+ >= $least}" 2>/dev/null ;;
  esac
}

# Fails unless all is there that the packages "$@" hold, and names what is not.
requireAll() {
  local package kind name least absent=
  for package in "$@"; do
    if ! isThere "$package"; then
      read -r kind name least <<<"${signs[$package]}"
      absent+="  $kind $name${least:+, $least or later} (Debian's package $package)"$'\n'
    fi
  done
  if [[ -n $absent ]]; then
    printf 'Missing, or too old:\n%s' "$absent" >&2
    printf 'Install it and try again; docs/distributions.md names packages of other systems.\n' >&2
    return 1
  fi
}

# Installs what is missing of the packages "$@" where there is apt-get, and fails unless all is there.
installMissing() {
  if command -v apt-get >/dev/null; then
    installPackages "$@"
  fi
  requireAll "$@"
}

# Shows and installs what is missing of the packages "$@"; asks nothing.
installPackages() {
  local missing
  mapfile -t missing < <(missingPackages "$@")
  if [[ ${#missing[@]} -eq 0 ]]; then
    return
  fi
  printf 'These Debian packages are missing and will be installed:\n'
  printf '  %s\n' "${missing[@]}"
  asRoot apt-get update -qq
  asRoot env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
