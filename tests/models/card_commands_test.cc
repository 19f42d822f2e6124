// What the commands of the card module make of its answers.
#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "tests/models/line.h"
#include "tests/models/model.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/stand_in_clock.h"

namespace {

constexpr std::uint64_t kCommands = 20000;
constexpr int kPhase = 20;  // milliseconds behind a whole second

std::string Bytes(const char* hex) {
  const auto bytes = FromHex(hex);
  return {bytes.begin(), bytes.end()};
}

const std::string kReady = Bytes("AA AA AA 96 69 00 04 00 00 90 94");
const std::string kFound = Bytes("AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97");
const std::string kSelected = Bytes("AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C");
const std::string kNoCard = Bytes("AA AA AA 96 69 00 04 00 00 81 85");
const std::string kIcPowerOn = Bytes("AA AA AA 96 69 00 04 40 02 41 07");
const std::string kReadFailed = Bytes("AA AA AA 96 69 00 04 00 00 41 45");
const std::string kUnsupported = Bytes("AA AA AA 96 69 00 04 00 00 21 45 00");

using Pieces = std::vector<std::string>;

// A status, right or nearly, and bytes behind it, in one piece or several.
Pieces AnyStatus(Random& random) {
  const std::string* const known[] = {&kReady,     &kFound,      &kSelected,   &kNoCard,
                                      &kIcPowerOn, &kReadFailed, &kUnsupported};
  std::string answer = *known[random.Between(0, 6)];
  if (random.OneIn(4)) {
    answer[static_cast<std::size_t>(random.Between(0, SizeOf(answer) - 1))] =
        static_cast<char>(random.Byte());
  }
  if (random.OneIn(4)) {
    answer += random.OneIn(2) ? std::string(static_cast<std::size_t>(random.Between(1, 130)), '\0')
                              : random.Bytes(random.Between(1, 130));
  }
  if (random.OneIn(40)) answer.resize(static_cast<std::size_t>(random.Between(1, 7)));
  if (random.OneIn(2)) return {answer};
  const auto cut = static_cast<std::size_t>(random.Between(1, SizeOf(answer)));
  if (cut == answer.size()) return {answer};
  return {answer.substr(0, cut), answer.substr(cut)};
}

constexpr std::size_t kMostRead = 4096;

// What comes until seven bytes and the number in the last two of them are there, or more than a
// read takes.
struct Received {
  int result = -56;
  std::string bytes;  // zeros behind what came
};

Received ModelExchange(const Pieces& pieces, std::size_t room) {
  std::string all;
  for (const std::string& piece : pieces) {
    all += piece;
    if (all.size() < 7) continue;
    const unsigned announced = BytesOf(all)[5] * 256U + BytesOf(all)[6];
    if (announced > all.size() - 7 && all.size() < kMostRead) continue;
    const std::size_t count = std::min(all.size(), room);
    all.resize(count);
    const int result = static_cast<int>(count);
    all.resize(room, '\0');
    return {result, all};
  }
  return {-56, std::string(room, '\0')};
}

bool LeadsTo(const Received& received, const std::string& expected) {
  return received.result >= SizeOf(expected) && received.bytes.rfind(expected, 0) == 0;
}

int ModelSelect(const Received& received) {
  if (received.result <= 0) return received.result;
  if (LeadsTo(received, kSelected)) return 0;
  if (LeadsTo(received, kNoCard)) return -2003;
  if (LeadsTo(received, kIcPowerOn)) return -2007;
  return -55;
}

// A line that was opened, with the end of a frame as its end condition.
void OpenLine() {
  line::Start(kPhase);
  ASSERT_EQ(0, tFuncOpenDevice("/dev/line", "", 9600, 0, 5));
  COMM_Zel_SetEndCondition(IdEndCondition);
}

void AnswerWith(const Pieces& pieces) {
  line::Start(kPhase);
  line::Now().answers = {pieces};
}

bool WasSent(const char* command) { return Equal(Bytes(command), line::Now().written); }

}  // namespace

TEST(ModelOfCheckDevice, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        const Pieces pieces = AnyStatus(random);
        AnswerWith(pieces);
        COMM_Zel_ChageReadTimeOut(0);

        const int library = CheckDevice();
        const Received received = ModelExchange(pieces, 128);
        int model = received.result;
        if (model > 0) {
          std::string ready = kReady;
          ready.resize(128, '\0');
          const auto count = static_cast<std::size_t>(model);
          if (received.bytes.compare(0, count, ready, 0, count) != 0) model = -6;
        }

        return Equal(model, library) && WasSent("AA AA AA 96 69 00 03 11 FF ED 00");
      },
      kCommands);
}

TEST(ModelOfSearchCardOneTime, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        const Pieces pieces = AnyStatus(random);
        AnswerWith(pieces);

        const int library = SearchCardOneTime(random.Between(-1, 1));
        const Received received = ModelExchange(pieces, 128);
        const int model = LeadsTo(received, kFound) ? 0 : received.result;

        return Equal(model, library) && WasSent("AA AA AA 96 69 00 03 20 01 22");
      },
      kCommands);
}

// Each answer that is not the right one costs a second.
TEST(ModelOfSearchCard, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        line::Start(kPhase);
        std::deque<Pieces>& answers = line::Now().answers;
        const int limit = 500 + 1000 * random.Between(-1, 4);
        int model = 1;
        int seconds = 0;
        while (model == 1) {
          // In one piece: nothing stays on the line for the next answer.
          Pieces pieces = {AnyStatus(random).front()};
          if (ModelExchange(pieces, 128).result <= 0) pieces = {kNoCard};
          answers.push_back(pieces);
          if (LeadsTo(ModelExchange(pieces, 128), kFound)) {
            model = 0;
          } else if (seconds * 1000 > limit) {
            model = -56;
          } else {
            ++seconds;
          }
        }
        const int pauses = stand_in_clock::SleepCalls();
        tFuncSearchIdDirect(0);

        const int library = SearchCard(limit);

        return Equal(model, library) && Equal(std::size_t{0}, line::Now().answers.size()) &&
               Equal(seconds, stand_in_clock::SleepCalls() - pauses);
      },
      kCommands);
}

TEST(ModelOfSelectIDCard, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        const Pieces pieces = AnyStatus(random);
        AnswerWith(pieces);
        COMM_Zel_ChageReadTimeOut(0);
        const bool once = random.OneIn(2);
        const bool direct = random.OneIn(8);
        const int pauses = stand_in_clock::SleepCalls();
        tFuncSearchIdDirect(direct ? 1 : 0);

        const int library = once ? SelectIDCardOneTime() : SelectIDCard();
        const Received received = ModelExchange(pieces, 128);
        int model = ModelSelect(received);
        int pause = model == 0 && !once ? 1 : 0;
        if (direct && !once && received.result > 0) {
          model = 0;
          pause = 0;
        }

        return Equal(model, library) && WasSent("AA AA AA 96 69 00 03 20 02 21") &&
               Equal(pause, stand_in_clock::SleepCalls() - pauses);
      },
      kCommands);
}

namespace {

// A read reply of a right length, or nearly.
Pieces AnyReadReply(Random& random) {
  constexpr int kLengths[] = {1295, 1297, 2321};
  int length = kLengths[random.Between(0, 2)];
  if (random.OneIn(8)) length += random.Between(-2, 2);
  if (random.OneIn(8)) length = random.Between(1, 60);
  if (random.OneIn(40)) length = random.Between(4080, 4100);
  std::string reply = random.Bytes(length);
  const std::string head = random.OneIn(8)   ? kReadFailed
                           : random.OneIn(8) ? kUnsupported
                                             : Bytes("AA AA AA 96 69 00 00 00 00 90");
  reply.replace(0, std::min(reply.size(), head.size()), head, 0,
                std::min(reply.size(), head.size()));
  if (reply.size() > 7 && head.size() == 10) {
    reply[5] = static_cast<char>((length - 7) / 256);
    reply[6] = static_cast<char>((length - 7) % 256);
  }
  if (reply.size() > 6 && !random.OneIn(8)) {
    unsigned check = 0;
    for (std::size_t i = 5; i + 1 < reply.size(); ++i) check ^= BytesOf(reply)[i];
    reply.back() = static_cast<char>(check);
  }
  if (random.OneIn(60)) reply.pop_back();
  if (reply.size() < 8 || random.OneIn(2)) return {reply};
  return {reply.substr(0, 7), reply.substr(7)};
}

int ModelJudgement(const Received& received) {
  const int length = received.result;
  if (length <= 0) return length;
  if (length < 11) return -55;
  if (length != 1295 && length != 1297 && length != 2321) return -55;
  const unsigned char* const bytes = BytesOf(received.bytes);
  unsigned check = 0;
  for (int i = 5; i < length - 1; ++i) check ^= bytes[i];
  if (check != bytes[length - 1]) return -55;
  if (LeadsTo(received, kReadFailed)) return -55;
  if (LeadsTo(received, kUnsupported)) return -2002;
  return 0;
}

}  // namespace

TEST(ModelOfReadIDCard, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        const Pieces pieces = AnyReadReply(random);
        AnswerWith(pieces);
        const int command = random.Between(0, 2);
        constexpr const char* kSent[] = {"AA AA AA 96 69 00 03 30 01 32",
                                         "AA AA AA 96 69 00 03 30 10 23",
                                         "AA AA AA 96 69 00 03 30 20 13"};
        const int finger = random.OneIn(2) ? 1 : random.Between(-3, -1);
        Outputs<4096> out(random);
        int length = 77;

        const int library = command == 2 ? ReadIDCardOneCmd(out.library(), &length)
                                         : ReadIDCard(command * finger, out.library(), &length);
        const Received received = ModelExchange(pieces, 4086);
        const int model = ModelJudgement(received);
        int kept = 0;
        if (model == 0) {
          kept = received.result;
          std::memcpy(out.model(), received.bytes.data(), static_cast<std::size_t>(kept));
        }

        return Equal(model, library) && Equal(kept, length) && out.AreEqual() &&
               WasSent(kSent[command]);
      },
      kCommands);
}

namespace {

constexpr int kAnswerAfter = 3;  // milliseconds

// A whole read whose answers all come soon, so that pauses take nearly all of the time.
class ModelSequence {
 public:
  explicit ModelSequence(Random& random) : random_(random) {}

  int Read(int limit, int finger, bool direct, bool at_once) {
    if (limit < 1 || limit > 120) return -2;
    while (!at_once) {
      if (!direct) {
        const int found = Search(limit);
        if (found != 0) return found;
        const int selected = ModelSelect(Send("AA AA AA 96 69 00 03 20 02 21", Status(), 128));
        if (selected != 0) return selected;
        ++pauses;
      }
      const char* const read =
          finger != 0 ? "AA AA AA 96 69 00 03 30 10 23" : "AA AA AA 96 69 00 03 30 01 32";
      const int result = ModelJudgement(Send(read, Reply(), 4086));
      if (result == 0 || result == -2002) return result;
      if (Milliseconds() > 1000 * limit) return -56;
      ++pauses;
    }
    while (true) {
      const int result = ModelJudgement(Send("AA AA AA 96 69 00 03 30 20 13", Reply(), 4086));
      if (result == 0) return 0;
      if (Milliseconds() > 1000 * limit) return -56;
      ++pauses;
    }
  }

  int pauses = 0;  // of a second each
  std::string sent;
  std::deque<Pieces> answers;
  std::string kept;  // the last good reply

 private:
  int Milliseconds() const {
    return 1000 * pauses + kAnswerAfter * static_cast<int>(answers.size());
  }

  int Search(int limit) {
    const int start = Milliseconds();
    while (true) {
      if (LeadsTo(Send("AA AA AA 96 69 00 03 20 01 22", Status(), 128), kFound)) return 0;
      if (Milliseconds() - start > 1000 * limit) return -56;
      ++pauses;
    }
  }

  Received Send(const char* command, const std::string& answer, std::size_t room) {
    sent += Bytes(command);
    answers.push_back({answer});
    Received received = ModelExchange(answers.back(), room);
    if (ModelJudgement(received) == 0) {
      kept = received.bytes.substr(0, static_cast<std::size_t>(received.result));
    }
    return received;
  }

  // Whole, so that a command's answer leaves nothing for the next one.
  std::string Status() {
    const std::string& right = answers.size() % 2 == 0 ? kFound : kSelected;
    const std::string any = AnyStatus(random_).front();
    return random_.OneIn(2) || ModelExchange({any}, 128).result <= 0 ? right : any;
  }
  std::string Reply() {
    std::string all;
    for (const std::string& piece : AnyReadReply(random_)) all += piece;
    const bool is_whole = all.size() <= kMostRead && ModelExchange({all}, 4086).result > 0;
    return random_.OneIn(2) || !is_whole ? kReadFailed : all;
  }

  Random& random_;
};

}  // namespace

TEST(ModelOfGetIDCardInfo, IsEqual) {
  OpenLine();
  ForEachInput(
      [](Random& random) {
        const int limit = random.OneIn(16) ? random.Between(-1, 122) : random.Between(1, 5);
        const int finger = random.Between(0, 2);
        const bool direct = random.OneIn(3);
        const bool at_once = random.OneIn(3);
        ModelSequence model(random);
        const int expected = model.Read(limit, finger, direct, at_once);
        line::Start(kPhase);
        line::Now().answers = model.answers;
        line::Now().answer_after = kAnswerAfter;
        const int pauses = stand_in_clock::SleepCalls();
        tFuncSearchIdDirect(direct ? 1 : 0);
        tFuncReadOneInstr(at_once ? 1 : 0);
        Outputs<4096> out(random);
        int length = 77;

        const int library = GetIDCardInfo(limit, finger, out.library(), &length);
        tFuncReadOneInstr(0);
        const std::string kept = expected == 0 ? model.kept : "";
        std::memcpy(out.model(), kept.data(), kept.size());

        return Equal(expected, library) && Equal(model.sent, line::Now().written) &&
               Equal(model.pauses, stand_in_clock::SleepCalls() - pauses) &&
               Equal(SizeOf(kept), length) && out.AreEqual();
      },
      kCommands);
}
