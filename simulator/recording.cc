#include "simulator/recording.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <utility>

namespace simulator {
namespace {

constexpr char kFirstLine[] = "qtrace 1";
constexpr double kLongest = 1e6;  // seconds of a recording

bool StartsWith(const Bytes& bytes, const Bytes& start) {
  return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

template <typename Number>
bool ToNumber(const std::string& word, int base, Number* number) {
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, *number, base);
  return error == std::errc() && stop == end && !word.empty();
}

bool ToTime(const std::string& word, std::chrono::microseconds* at) {
  double seconds = 0;
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, seconds);
  if (error != std::errc() || stop != end || !(seconds >= 0 && seconds < kLongest)) return false;
  *at = std::chrono::microseconds(std::llround(seconds * 1e6));
  return true;
}

// Empty, or what is wrong with the line.
std::string ParsePiece(const std::string& line, RecordedPiece* piece) {
  std::istringstream words(line);
  std::string word;
  if (!(words >> word) || !ToTime(word, &piece->at)) return "a time in seconds belongs first";
  if (!(words >> word) || (word != "<" && word != ">" && word != "speed"))
    return "\"<\", \">\" or \"speed\" belongs behind the time";
  if (word == "speed") {
    const bool number = words >> word && ToNumber(word, 10, &piece->speed) && piece->speed > 0;
    return number && !(words >> word) ? "" : "a speed in bit/s belongs behind \"speed\"";
  }
  piece->from_host = word == "<";
  while (words >> word) {
    std::uint8_t byte = 0;
    if (word.size() != 2 || !ToNumber(word, 16, &byte)) return "\"" + word + "\" is no byte";
    piece->bytes.push_back(byte);
  }
  return piece->bytes.empty() ? "there are no bytes" : "";
}

}  // namespace

std::string RecordingText(std::span<const RecordedPiece> pieces, std::string_view remark) {
  std::string text = std::string(kFirstLine) + "\n";
  std::istringstream lines{std::string(remark)};
  for (std::string line; std::getline(lines, line);) text += "# " + line + "\n";
  for (const RecordedPiece& piece : pieces) {
    char word[32];
    std::snprintf(word, sizeof word, "%lld.%06lld",
                  static_cast<long long>(piece.at.count() / 1'000'000),
                  static_cast<long long>(piece.at.count() % 1'000'000));
    text += word;
    if (piece.speed != 0) {
      text += " speed " + std::to_string(piece.speed);
    } else {
      text += piece.from_host ? " <" : " >";
    }
    for (const std::uint8_t byte : piece.bytes) {
      std::snprintf(word, sizeof word, " %02X", byte);
      text += word;
    }
    text += '\n';
  }
  return text;
}

std::optional<std::vector<RecordedPiece>> ParseRecording(std::string_view text, std::string* why) {
  std::istringstream lines{std::string(text)};
  std::string line;
  if (!std::getline(lines, line) || line != kFirstLine) {
    *why = "line 1: it is not \"" + std::string(kFirstLine) + "\"";
    return std::nullopt;
  }
  std::vector<RecordedPiece> pieces;
  for (int number = 2; std::getline(lines, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    RecordedPiece piece;
    std::string problem = ParsePiece(line, &piece);
    if (problem.empty() && !pieces.empty() && piece.at < pieces.back().at)
      problem = "the time goes back";
    if (!problem.empty()) {
      *why = "line " + std::to_string(number) + ": " + problem;
      return std::nullopt;
    }
    pieces.push_back(std::move(piece));
  }
  return pieces;
}

Replay::Replay(const std::vector<RecordedPiece>& pieces) {
  std::chrono::microseconds before{0};
  for (const RecordedPiece& piece : pieces) {
    if (piece.speed != 0) continue;
    if (piece.from_host) {
      turns_.push_back({piece.bytes, {}});
    } else if (!turns_.empty()) {
      const auto delay = std::chrono::round<std::chrono::milliseconds>(piece.at - before);
      turns_.back().answer.push_back({delay, piece.bytes});
    }
    before = piece.at;
  }
}

// The turn whose bytes have come: the expected one, or the next of those behind it.
bool Replay::Find(std::size_t* turn) const {
  for (std::size_t i = 0; i < turns_.size(); ++i) {
    *turn = (next_ + i) % turns_.size();
    if (StartsWith(received_, turns_[*turn].sent)) return true;
  }
  return false;
}

bool Replay::MayComplete() const {
  return std::any_of(turns_.begin(), turns_.end(),
                     [&](const Turn& turn) { return StartsWith(turn.sent, received_); });
}

std::vector<Exchange> Replay::Receive(std::span<const std::uint8_t> bytes, int) {
  std::vector<Exchange> exchanges;
  received_.insert(received_.end(), bytes.begin(), bytes.end());
  while (!received_.empty()) {
    Exchange exchange;
    std::size_t turn = 0;
    if (Find(&turn)) {
      const Turn& found = turns_[turn];
      Bytes request = found.sent;
      if (auto known = TakeRequest(&request); known && request.empty()) {
        exchange.request = std::move(*known);
      } else {
        exchange.request.bytes = found.sent;
      }
      exchange.steps = found.answer;
      exchange.meaning = found.answer.empty() ? "" : "as recorded";
      next_ = (turn + 1) % turns_.size();
      received_.erase(received_.begin(),
                      received_.begin() + static_cast<std::ptrdiff_t>(found.sent.size()));
    } else if (MayComplete()) {
      break;
    } else {
      exchange.request.bytes = std::exchange(received_, {});
      exchange.request.meaning = "not in the recording";
    }
    exchanges.push_back(std::move(exchange));
  }
  return exchanges;
}

}  // namespace simulator
