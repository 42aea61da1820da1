// A client of JACK: `audrel-test-jack-player NAME [key=number ...]`, with the numbers of `outputs`
// and `inputs` (out_1, in_1 and so on), the `stamp` stream that it plays if any, and the `latency`
// that it says its inputs have to the speakers. To what an output plays, the input of the same
// number is added. Commands come one a line and are answered in one line:
//
//   connect OUTPUT INPUT, disconnect OUTPUT INPUT
//   connections PORT   the names of those that it is connected to, sorted, with tabs between
//   latency PORT       from an output to the speakers: at least and at most
//   report             frames played so far, shortest and longest cycle
//
// It ends when its standard input does.

#include <jack/jack.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Stamp.h"

namespace audrel::pwtest {
namespace {

using Options = std::map<std::string, std::uint32_t>;

class JackPlayer {
 public:
  JackPlayer(const std::string& name, const Options& options)
      : stamp_(number(options, "stamp")), latency_(number(options, "latency")) {
    client_ = jack_client_open(
        name.c_str(), static_cast<jack_options_t>(JackNoStartServer | JackUseExactName), nullptr);
    if (client_ == nullptr) {
      return;
    }
    addPorts("out_", JackPortIsOutput, number(options, "outputs"), outputs_);
    addPorts("in_", JackPortIsInput, number(options, "inputs"), inputs_);
    jack_set_process_callback(
        client_,
        [](jack_nframes_t frames, void* self) {
          static_cast<JackPlayer*>(self)->process(frames);
          return 0;
        },
        this);
    if (latency_ > 0) {
      jack_set_latency_callback(
          client_,
          [](jack_latency_callback_mode_t mode, void* self) {
            static_cast<JackPlayer*>(self)->tellLatency(mode);
          },
          this);
    }
    isActive_ = jack_activate(client_) == 0;
    if (latency_ > 0) {
      jack_recompute_total_latencies(client_);
    }
  }

  ~JackPlayer() {
    if (client_ != nullptr) {
      jack_client_close(client_);
    }
  }
  JackPlayer(const JackPlayer&) = delete;
  JackPlayer& operator=(const JackPlayer&) = delete;

  bool isActive() const { return isActive_; }

  std::string perform(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string first;
    std::string second;
    words >> command >> first >> second;
    if (command == "connect") {
      return jack_connect(client_, first.c_str(), second.c_str()) == 0 ? "ok" : "refused";
    }
    if (command == "disconnect") {
      return jack_disconnect(client_, first.c_str(), second.c_str()) == 0 ? "ok" : "refused";
    }
    if (command == "connections") {
      return connections(first);
    }
    if (command == "latency") {
      return latency(first);
    }
    return command == "report" ? report() : "no such command";
  }

 private:
  static std::uint32_t number(const Options& options, const std::string& key) {
    const auto found = options.find(key);
    return found == options.end() ? 0 : found->second;
  }

  void addPorts(const std::string& prefix, JackPortFlags direction, std::uint32_t count,
                std::vector<jack_port_t*>& ports) {
    for (std::uint32_t i = 1; i <= count; ++i) {
      ports.push_back(jack_port_register(client_, (prefix + std::to_string(i)).c_str(),
                                         JACK_DEFAULT_AUDIO_TYPE, direction, 0));
    }
  }

  void process(jack_nframes_t frames) noexcept {
    const std::uint64_t first = frame_;
    for (std::uint32_t channel = 0; channel < outputs_.size(); ++channel) {
      auto* played = static_cast<float*>(jack_port_get_buffer(outputs_[channel], frames));
      const auto* taken =
          channel < inputs_.size()
              ? static_cast<const float*>(jack_port_get_buffer(inputs_[channel], frames))
              : nullptr;
      for (std::uint32_t i = 0; i < frames; ++i) {
        const float own = stamp_ > 0 ? asFloat(stampedSample({stamp_, first + i}, channel)) : 0.0F;
        played[i] = taken != nullptr ? own + taken[i] : own;
      }
    }
    frame_ = first + frames;
    shortest_ = std::min(shortest_.load(), frames);
    longest_ = std::max(longest_.load(), frames);
  }

  void tellLatency(jack_latency_callback_mode_t mode) {
    if (mode != JackPlaybackLatency) {
      return;
    }
    jack_latency_range_t range = {.min = latency_, .max = latency_};
    for (jack_port_t* input : inputs_) {
      jack_port_set_latency_range(input, mode, &range);
    }
  }

  std::string connections(const std::string& port) {
    const char** connected =
        jack_port_get_all_connections(client_, jack_port_by_name(client_, port.c_str()));
    std::vector<std::string> names;
    for (const char** name = connected; name != nullptr && *name != nullptr; ++name) {
      names.emplace_back(*name);
    }
    jack_free(static_cast<void*>(connected));
    std::ranges::sort(names);
    std::string text;
    for (const std::string& name : names) {
      text += (text.empty() ? "" : "\t") + name;
    }
    return text;
  }

  std::string latency(const std::string& port) {
    jack_latency_range_t range = {.min = 0, .max = 0};
    jack_port_get_latency_range(jack_port_by_name(client_, port.c_str()), JackPlaybackLatency,
                                &range);
    return std::to_string(range.min) + " " + std::to_string(range.max);
  }

  std::string report() const {
    std::ostringstream text;
    text << frame_ << " " << shortest_ << " " << longest_;
    return text.str();
  }

  std::uint32_t stamp_;
  std::uint32_t latency_;
  jack_client_t* client_ = nullptr;
  std::vector<jack_port_t*> outputs_;
  std::vector<jack_port_t*> inputs_;
  bool isActive_ = false;
  std::atomic<std::uint64_t> frame_ = 0;
  std::atomic<std::uint32_t> shortest_ = UINT32_MAX;
  std::atomic<std::uint32_t> longest_ = 0;
};

int run(int count, char** arguments) {
  Options options;
  for (int i = 2; i < count; ++i) {
    const std::string word = arguments[i];
    const auto equals = word.find('=');
    options[word.substr(0, equals)] =
        static_cast<std::uint32_t>(std::strtoul(word.c_str() + equals + 1, nullptr, 10));
  }
  JackPlayer player(count > 1 ? arguments[1] : "", options);
  if (!player.isActive()) {
    std::cout << "no server\n" << std::flush;
    return EXIT_FAILURE;
  }
  std::cout << "ready\n" << std::flush;
  std::string line;
  while (std::getline(std::cin, line)) {
    std::cout << player.perform(line) << "\n" << std::flush;
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace audrel::pwtest

int main(int count, char** arguments) {
  return audrel::pwtest::run(count, arguments);
}
