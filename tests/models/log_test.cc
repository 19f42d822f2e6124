// Log lines and the configuration file.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "quillonid/support.h"
#include "tests/models/model.h"
#include "tests/support/still_log.h"

namespace {

constexpr std::uint64_t kLines = 20000;

// What is written to the log from one call to the next; the file is emptied now and then.
class LogTail {
 public:
  LogTail() {
    StartLog();
    DPrintLogToFile("first");
    file_ = open(kLogFile, O_RDWR | O_CLOEXEC);
    Next();
  }
  LogTail(const LogTail&) = delete;
  LogTail& operator=(const LogTail&) = delete;
  ~LogTail() { close(file_); }

  std::string Next() {
    std::string text(16384, '\0');
    const ssize_t got = pread(file_, text.data(), text.size(), at_);
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    at_ += got > 0 ? got : 0;
    if (at_ > 1 << 20 && ftruncate(file_, 0) == 0) at_ = 0;
    return text;
  }

 private:
  int file_ = -1;
  off_t at_ = 0;
};

std::string AnyMessage(Random& random, int most) {
  std::string text =
      random.Bytes(random.OneIn(16) ? random.Between(0, most) : random.Between(0, 60));
  for (char& c : text) {
    if (c == '\0') c = ' ';
  }
  return text;
}

// The text that opens every line, changed now and then.
std::string AnyVersion(Random& random) {
  static std::string version;
  if (random.OneIn(8)) {
    version = AnyMessage(random, 127).substr(0, 127);
    QL_DebugSetVersion(version.c_str());
  }
  return version;
}

std::string TypeText(int type) { return type == 0 ? "INFO:  " : type == 1 ? "!!ERROR:   " : ""; }

std::string AreaName(int level) {
  constexpr const char* kNames[] = {
      "Public:", "Comm:",    "CommDev:", "Instr:", "Loginc", "BusiId:",
      "BusiIc:", "BusiMsg:", "AppId:",   "AppIc",  "AppMsg"};
  return level >= 1 && level <= 11 ? kNames[level - 1] : "";
}

// Type text and area name as they leave one work buffer: the name over the beginning of the text.
std::string TypeAndArea(int type, int level) {
  std::string work = TypeText(type);
  std::string text = work + "  ";
  const std::string name = AreaName(level);
  work.resize(std::max(work.size(), name.size()));
  work.replace(0, name.size(), name);
  return text + work + "  ";
}

std::string HexLine(const std::string& bytes, int length) {
  std::string text = "LEN=" + std::to_string(length) + "   HEX: ";
  for (int i = 0; i < length; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", unsigned{BytesOf(bytes)[i]});
    text += digits;
  }
  return text;
}

}  // namespace

TEST(ModelOfDPrintLogToFile, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  LogTail log;
  ForEachInput(
      [&log](Random& random) {
        const std::string version = AnyVersion(random);
        const std::string message = AnyMessage(random, 5000);
        const int number = static_cast<int>(random.Word());

        DPrintLogToFile("[%s] n = %d ", message.c_str(), number);
        std::string model = "[" + message + "] n = " + std::to_string(number) + " ";
        model.resize(std::min<std::size_t>(model.size(), 4095));

        return Equal(version + " " + kStamp + "  " + model + "\r\n", log.Next());
      },
      kLines);
}

TEST(ModelOfDPrintLogToFileAddType, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  LogTail log;
  ForEachInput(
      [&log](Random& random) {
        const std::string version = AnyVersion(random);
        const std::string message = AnyMessage(random, 5000);
        const int type = random.Between(-1, 3);
        const int level = random.Between(-1, 13);

        DPrintLogToFileAddType(type, level, "%s", message.c_str());

        return Equal(" " + version + " " + kStamp + "  " + TypeAndArea(type, level) +
                         message.substr(0, 4095) + "\r\n",
                     log.Next());
      },
      kLines);
}

TEST(ModelOfDPrintDataHexToFile, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  LogTail log;
  ForEachInput(
      [&log](Random& random) {
        const std::string version = AnyVersion(random);
        const bool has_title = !random.OneIn(4);
        const std::string title = AnyMessage(random, 100);
        const std::string bytes =
            random.Bytes(random.OneIn(16) ? random.Between(0, 4096) : random.Between(0, 40));
        const int length = random.OneIn(8) ? random.Between(-5, 0) : SizeOf(bytes);

        DPrintDataHexToFile(has_title ? title.c_str() : nullptr, bytes.data(), length);

        return Equal(version + " " + kStamp + "  " + (has_title ? title + "  " : "") +
                         HexLine(bytes, length) + "\r\n",
                     log.Next());
      },
      kLines);
}

TEST(ModelOfDPrintDataHexToFileAddType, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  LogTail log;
  ForEachInput(
      [&log](Random& random) {
        const std::string version = AnyVersion(random);
        const bool has_title = !random.OneIn(4);
        const std::string title = AnyMessage(random, 100);
        const std::string bytes = random.Bytes(random.Between(0, 200));
        const int type = random.Between(0, 2);
        const int level = random.Between(-1, 13);

        DPrintDataHexToFileAddType(type, level, has_title ? title.c_str() : nullptr, BytesOf(bytes),
                                   SizeOf(bytes));
        const std::string model = version + " " + kStamp + "  " + TypeAndArea(type, level) +
                                  (has_title ? title + "  " : "") + HexLine(bytes, SizeOf(bytes)) +
                                  "\r\n";

        return Equal(type == 0 ? "" : model, log.Next());
      },
      kLines);
}

TEST(ModelOfMapDebugTypes, AreEqual) {
  ForEachInput([](Random& random) {
    const int number = random.Between(-3, 15);
    Outputs<12> type(random);
    Outputs<8> level(random);

    MapDebugInfoType(number, type.library_text());
    MapDebugLevelType(number, level.library_text());
    const std::string text = TypeText(number);
    if (!text.empty()) std::memcpy(type.model(), text.c_str(), text.size() + 1);
    std::memcpy(level.model(), AreaName(number).data(), AreaName(number).size());

    return type.AreEqual() && level.AreEqual();
  });
}

namespace {

// Lines of at most 1,023 characters made of few words, so that many of them match.
std::string AnyIni(Random& random) {
  constexpr const char* kWords[] = {"[A]", "[AB]", "A",  "B",  "AB",   "=", "=",    "1",
                                    " ",   "#",    "//", "\r", "x[A]", "]", "\xFF", "[A]=1"};
  std::string text;
  for (int lines = random.Between(0, 12); lines > 0; --lines) {
    for (int words = random.Between(0, 5); words > 0; --words) {
      text += kWords[random.Between(0, 15)];
    }
    if (random.OneIn(40)) text += random.Text(random.Between(900, 980), "AB=1 ");
    if (random.OneIn(60)) text.push_back('\0');
    text.push_back('\n');
  }
  if (random.OneIn(4)) text += random.OneIn(2) ? "A=9" : "[A]";
  return text;
}

// The value, or nothing.
const char* ModelValue(const std::string& file, const std::string& section, const std::string& key,
                       std::string* value) {
  bool is_inside = false;
  std::string line;
  for (const char c : file) {
    line.push_back(c);
    if (c != '\n') continue;
    line.back() = '\0';
    const std::string text = line.substr(0, line.find('\0'));
    line.clear();
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || !is_inside) {
      if (text.rfind("[" + section + "]", 0) == 0) is_inside = true;
      continue;
    }
    if (text.find(key) == std::string::npos) continue;
    if (text.rfind('#', 0) == 0 || text.rfind("//", 0) == 0) continue;
    *value = text.substr(equals + 1);
    return value->c_str();
  }
  return nullptr;
}

}  // namespace

TEST(ModelOfGetIniKeyString, IsEqual) {
  const std::string path = WorkFolder() + "/ini";
  std::string content;
  WriteWholeFile(path, content);
  ForEachInput(
      [&](Random& random) {
        if (random.OneIn(4)) WriteWholeFile(path, content = AnyIni(random));
        const std::string section = random.OneIn(2) ? "A" : "AB";
        const std::string key = random.Text(random.Between(1, 2), "AB1");
        std::string value;
        const char* model = ModelValue(content, section, key, &value);

        const char* library =
            GetIniKeyString(section.c_str(), key.c_str(), "7 default", path.c_str());
        const bool is_equal =
            Equal(std::string(model != nullptr ? model : "7 default"), std::string(library));

        return is_equal &&
               Equal(std::strtol(model != nullptr ? model : "7 default", nullptr, 10),
                     GetIniKeyInt(section.c_str(), key.c_str(), "7 default", path.c_str()));
      },
      kLines);
}

namespace {

// Sections and keys that switch logging on, or nearly do.
std::string AnyConfiguration(Random& random) {
  constexpr const char* kStarts[] = {"[QuillonLog]",   "[quillonLog]", " [QuillonLog]", "[Other]",
                                     "[QuillonLog] x", "LogFlag=",     "LogFlag = ",    "#LogFlag=",
                                     "//LogFlag=",     "MyLogFlags=",  "logflag=",      "LogFlag"};
  constexpr const char* kValues[] = {"0", "1", "2", "-1", " 1", "x", "", "1x", "0x1", "01", "\r"};
  std::string text;
  for (int lines = random.Between(0, 5); lines > 0; --lines) {
    text += kStarts[random.OneIn(2) ? random.Between(0, 11) : 5 * random.Between(0, 1)];
    if (random.OneIn(8)) {
      text += std::to_string(static_cast<int>(random.Word()));
    } else {
      text += kValues[random.Between(0, 10)];
    }
    if (random.OneIn(8)) text += "\r";
    text += "\n";
  }
  if (random.OneIn(8) && !text.empty()) text.pop_back();
  return text;
}

// Any text that an application may name a file by.
std::string AnyName(Random& random) {
  std::string name = random.OneIn(4) ? "" : AnyMessage(random, 600);
  if (random.OneIn(16)) name.resize(static_cast<std::size_t>(random.Between(510, 514)), '.');
  return name;
}

}  // namespace

TEST(ModelOfIsWriteLog, IsEqual) {
  NEEDS_PRIVATE_ROOT();
  std::string content;
  WriteWholeFile(kConfigurationFile, content);
  ForEachInput(
      [&content](Random& random) {
        if (random.OneIn(16)) {
          content.clear();
          unlink(kConfigurationFile);
        } else {
          content = AnyConfiguration(random);
          WriteWholeFile(kConfigurationFile, content);
        }
        std::string value;
        const char* const model = ModelValue(content, "QuillonLog", "LogFlag", &value);

        return Equal(std::atoi(model != nullptr ? model : "0"), isWriteLog());
      },
      kLines);
}

// The name that is kept, and the path made of it. The other name changes nothing.
TEST(ModelOfSetLogPath, IsEqual) {
  std::string name;
  ForEachInput([&name](Random& random) {
    bool is_equal = true;
    if (random.OneIn(2)) {
      name = AnyName(random);
      const auto* const kept = static_cast<const char*>(SetLogPath(name.c_str()));
      name.resize(std::min<std::size_t>(name.size(), 512));
      std::string zeros = name;
      zeros.resize(512, '\0');
      is_equal = Equal(zeros, std::string(kept, 512));
    }
    if (random.OneIn(2)) {
      const std::string other = AnyName(random);
      DPritLogSetFileName(random.OneIn(8) ? nullptr : other.c_str());
    }
    const std::string path = "/home/quillon/" + (name.empty() ? "Alg_debug.log" : name);

    return is_equal && Equal(path, std::string(getLogFilePath()));
  });
}
