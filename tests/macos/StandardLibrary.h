#pragma once

/// What most of the adapters and fake frameworks include, compiled once for a build that has to be
/// quick.
#include <any>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>
