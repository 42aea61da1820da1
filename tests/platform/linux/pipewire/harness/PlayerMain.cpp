// A program that plays what it is told to: `audrel-test-player SOCKET [key=value ...]`, where the
// properties are what it says of itself. Commands come one a line and are answered in one line:
//
//   open NAME stamp:STREAM|tone:HZ s16|f32 CHANNELS RATE [key=value ...]
//   pause NAME, resume NAME, close NAME
//   reconnect          to the server, without any stream
//   report NAME        frames, graph rate, quanta and stretches played so far
//
// It ends when its standard input does.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "tests/platform/linux/pipewire/harness/PlayerStream.h"

namespace audrel::pwtest {
namespace {

std::map<std::string, std::string> properties(std::istream& words) {
  std::map<std::string, std::string> result;
  std::string word;
  while (words >> word) {
    const auto equals = word.find('=');
    result[word.substr(0, equals)] = word.substr(equals + 1);
  }
  return result;
}

std::variant<Stamped, Tone> source(const std::string& text) {
  std::string words = text;
  std::ranges::replace(words, ':', ' ');
  std::istringstream stream(words);
  std::string kind;
  stream >> kind;
  if (kind == "tone") {
    Tone tone;
    stream >> tone.frequency;
    return tone;
  }
  Stamped stamped;
  stream >> stamped.stream;
  return stamped;
}

class Player {
 public:
  Player(std::string socketPath, std::map<std::string, std::string> properties)
      : socketPath_(std::move(socketPath)), properties_(std::move(properties)) {}

  ~Player() { disconnect(); }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  bool connect() {
    client_ = std::make_unique<Client>(socketPath_, properties_);
    return client_->isConnected();
  }

  std::string perform(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string name;
    words >> command >> name;
    if (command == "reconnect") {
      disconnect();
      return connect() ? "ok" : "no server";
    }
    const Locked lock(client_->loop());
    if (command == "open") {
      open(name, words);
      return "ok";
    }
    const auto found = streams_.find(name);
    if (found == streams_.end()) {
      return "no such stream";
    }
    if (command == "close") {
      streams_.erase(found);
    } else if (command == "pause" || command == "resume") {
      found->second->setPlaying(command == "resume");
    } else if (command == "report") {
      return report(*found->second);
    } else {
      return "no such command";
    }
    return "ok";
  }

 private:
  void disconnect() {
    if (client_) {
      client_->stop();
    }
    streams_.clear();
    client_.reset();
  }

  void open(const std::string& name, std::istream& words) {
    PlayerStream::Settings settings;
    settings.name = name;
    std::string sourceText;
    std::string format;
    words >> sourceText >> format >> settings.channels >> settings.rate;
    settings.source = source(sourceText);
    settings.format = format == "s16" ? SampleFormat::int16 : SampleFormat::float32;
    settings.properties = properties(words);
    streams_[name] = std::make_unique<PlayerStream>(*client_, std::move(settings));
  }

  static std::string report(const PlayerStream& stream) {
    std::ostringstream text;
    text << stream.playedFrames() << " " << stream.graphRate() << " " << stream.shortestQuantum()
         << " " << stream.longestQuantum();
    for (const auto& stretch : stream.stretches()) {
      text << " " << stretch.graphPosition << " " << stretch.frame;
    }
    return text.str();
  }

  std::string socketPath_;
  std::map<std::string, std::string> properties_;
  std::unique_ptr<Client> client_;
  std::map<std::string, std::unique_ptr<PlayerStream>> streams_;
};

int run(int count, char** arguments) {
  std::map<std::string, std::string> own;
  for (int i = 2; i < count; ++i) {
    const std::string word = arguments[i];
    const auto equals = word.find('=');
    own[word.substr(0, equals)] = word.substr(equals + 1);
  }
  Player player(count > 1 ? arguments[1] : "", std::move(own));
  if (!player.connect()) {
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
