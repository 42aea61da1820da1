#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the kernel tells about other processes.
namespace audrel::linuxos::proc {

/// When the process started, in clock ticks since boot; nothing when there is no such process, or
/// it has ended and its parent has not taken note of it. With the pid it names a process for good,
/// since pids are reused.
std::optional<std::uint64_t> startTime(pid_t pid);

/// The path of the program that the process runs; empty when it cannot be read.
std::string executable(pid_t pid);

/// Whether the process runs a program of that file name that the system's administrator installed,
/// in the system's own folders and not in a sandbox's.
bool runsSystemProgram(pid_t pid, std::string_view name);

/// The name that the kernel keeps for the process, at most 15 bytes; empty when unreadable.
std::string commandName(pid_t pid);

/// The application identifier of a Flatpak sandbox that the process is in; empty when it is in
/// none. The file that tells it is in the root folder that the process sees, where a process in a
/// mount namespace of its own may have put anything: what it says is the process's own word.
std::string flatpakApplication(pid_t pid);

/// The application identifier in the name of the process's desktop scope or service
/// ("app-gnome-org.example.Player-1234.scope"); empty when it is in none.
std::string scopeApplication(pid_t pid);

/// The part of `scopeApplication` that reads the text of a cgroup file.
std::string applicationOfCgroup(const std::string& cgroup);

/// This machine's id; empty when it has none.
std::string machineId();

}  // namespace audrel::linuxos::proc
