#include "tools/qlid/command_line.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>

#include "tools/qlid/devices.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/versions.h"

namespace qlid {
namespace {

const std::vector<std::string> kKinds = {"any", "resident", "foreigner", "permit", "gat"};
const std::vector<std::string> kCards = {"resident", "foreigner", "permit", "gat"};

// The check with its refusal in the chosen language: its own English, or the value and `chinese`.
CLI::Validator InWords(const CLI::Validator& check, const std::string& chinese) {
  return CLI::Validator(
      [check, chinese](std::string& value) {
        const std::string english = check(value);
        if (english.empty()) return english;
        return std::string(Tr(english.c_str(), (value + " " + chinese).c_str()));
      },
      check.get_description());
}

CLI::Validator OneOf(const std::vector<std::string>& words) {
  return InWords(CLI::IsMember(words), "不在 " + CLI::detail::join(words, "、") + " 之中");
}

CLI::Validator Within(int least, int most) {
  return InWords(CLI::Range(least, most),
                 "不在 " + std::to_string(least) + " 至 " + std::to_string(most) + " 之间");
}

void AddDevice(CLI::App* command, std::string* device, const char* about) {
  command->add_option("--device,-d", *device, about)->envname("QLID_DEVICE")->capture_default_str();
}

void AddBaud(CLI::App* command, long* baud) {
  command->add_option("--baud,-b", *baud, Tr("Serial speed in bit/s", "串口波特率（bit/s）"))
      ->envname("QLID_BAUD")
      ->capture_default_str();
}

void AddJson(CLI::App* command, bool* json) {
  command->add_flag("--json", *json,
                    Tr("One JSON document on standard output", "标准输出上只有一个 JSON 文档"));
}

void AddCard(CLI::App* command, std::string* card) {
  command->add_option("--card", *card, Tr("Specimen card", "样本卡"))
      ->check(OneOf(kCards))
      ->capture_default_str();
}

void AddUsbIds(CLI::App* command, std::vector<std::string>* ids) {
  command
      ->add_option("--usb-id", *ids,
                   Tr("USB id of a reader beside the known ones, vendor:product",
                      "已知标识以外的 USB 读卡器标识，厂商:产品"))
      ->type_name("1234:5678")
      ->expected(1, 10)
      ->check([](const std::string& text) {
        UsbIdText id = {};
        return ParseUsbId(text, &id) ? std::string()
                                     : Format(Tr("\"%s\" is no USB id such as 1234:5678",
                                                 "\"%s\" 不是 1234:5678 这样的 USB 标识"),
                                              text.c_str());
      });
}

// A picture of another form would be one under a false name. Standard output, devices and pipes
// have no name to go by.
std::string PictureProblem(const std::string& path) {
  struct stat status = {};
  const bool taken_as_is =
      path == "-" || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
  if (taken_as_is || IsPictureName(path)) return "";
  return Format(Tr("%s is to be a picture: end its name in .bmp or .png",
                   "%s 应为图片：文件名须以 .bmp 或 .png 结尾"),
                path.c_str());
}

void AddOutput(CLI::App* command, OutputOptions* output) {
  command->add_flag("--json", output->json,
                    Tr("One JSON document on standard output, on success and on failure",
                       "无论成败，标准输出上只有一个 JSON 文档"));
  command->add_flag(
      "--redact", output->redact,
      Tr("Mask what identifies the holder, except in the files of --photo and --native",
         "遮盖可识别持证人的内容，--photo 和 --native 的文件除外"));
  command
      ->add_option(
          "--photo", output->photo,
          Tr("Write the photo to this file (.bmp or .png)", "把照片写入此文件（.bmp 或 .png）"))
      ->type_name("FILE")
      ->check(PictureProblem);
  CLI::Option* picture =
      command->add_flag("--picture", output->picture,
                        Tr("Show the photo on the terminal, in colour", "在终端上以彩色显示照片"));
  for (const char* other : {"--json", "--redact"}) picture->excludes(command->get_option(other));
}

void AddCommonOptions(CLI::App& app, CommandLine* line) {
  app.set_help_flag("-h,--help", Tr("Print this help message and exit", "显示此帮助信息并退出"));
  app.set_version_flag("--version", VersionText,
                       Tr("Display program version information and exit", "显示版本信息并退出"));
  app.add_option("--lang", line->language, Tr("Language of messages", "信息的语言"))
      ->check(OneOf({"en", "zh"}));
  app.add_option("--color", line->color, Tr("Colour on the terminal", "终端上的颜色"))
      ->check(OneOf({"auto", "always", "never"}))
      ->capture_default_str();
  if (ChosenLanguage() == Language::kChinese) app.formatter(ChineseHelp());
  // Inherited: a common option is taken behind the command as well.
  app.fallthrough();
}

void AddDemo(CLI::App& app, CommandLine* line) {
  CLI::App* demo = app.add_subcommand(
      "demo", Tr("See a specimen card read, no hardware needed", "演示读取一张样本卡，无需硬件"));
  AddCard(demo, &line->demo.card);
  demo->add_option("--fault", line->demo.fault,
                   Tr("Let the reader misbehave and see what is reported; \"help\" lists the names",
                      "让读卡器出错，看看会报告什么；\"help\" 列出名称"));
  demo->add_option(
          "--photo", line->demo.photo,
          Tr("Write the photo to this file (.bmp or .png)", "把照片写入此文件（.bmp 或 .png）"))
      ->type_name("FILE")
      ->check(PictureProblem)
      ->default_str(kDemoPhoto);
  AddJson(demo, &line->demo.json);
}

void AddRead(CLI::App& app, CommandLine* line) {
  CLI::App* read = app.add_subcommand("read", Tr("Read a card", "读取一张卡"));
  ReadRequest& request = line->read.request;
  AddDevice(read, &request.device,
            Tr("\"HID\" for a USB reader, or a serial port such as /dev/ttyUSB0",
               "\"HID\" 表示 USB 读卡器，或串口，如 /dev/ttyUSB0"));
  AddBaud(read, &request.baud);
  read->add_option("--timeout,-t", request.timeout,
                   Tr("Limit of the read in seconds", "读卡时限（秒）"))
      ->envname("QLID_TIMEOUT")
      ->check(Within(1, 120))
      ->capture_default_str();
  read->add_option("--kind", line->read.kind, Tr("Kind of card to accept", "接受的证件种类"))
      ->check(OneOf(kKinds))
      ->capture_default_str();
  read->add_flag("--fingerprints", request.fingerprints,
                 Tr("Read the fingerprint templates too", "同时读取指纹模板"));
  read->add_flag("--raise-baud", request.raise_baud,
                 Tr("Reach a serial reader at 9600 bit/s, then raise its speed",
                    "先以 9600 bit/s 连接串口读卡器，再提高其波特率"));
  read->add_flag("--search-direct", request.search_direct,
                 Tr("Read at once, without search and select", "不寻卡、不选卡，直接读卡"));
  read->add_flag("--one-command", request.one_command,
                 Tr("Read with the one-command read", "使用单命令读卡"));
  AddUsbIds(read, &request.usb_ids);
  read->add_flag("--watch", line->read.watch,
                 Tr("Card after card until stopped; waits for a reader that was pulled",
                    "逐张读卡，直到被停止；读卡器拔出后等待其恢复"));
  read->add_option("--pause", line->read.pause,
                   Tr("With --watch: milliseconds between two reads",
                      "与 --watch 同用：两次读卡之间的毫秒数"))
      ->check(Within(0, 60000))
      ->capture_default_str();
  read->add_option("--exec", line->read.exec,
                   Tr("Run this shell command once per card, the card's JSON on its standard input",
                      "每张卡运行一次此 shell 命令，卡的 JSON 从其标准输入送入"))
      ->type_name("COMMAND");
  read->add_option("--exec-timeout", line->read.exec_seconds,
                   Tr("Seconds that the command may take", "该命令最多可运行的秒数"))
      ->check(Within(1, 86400))
      ->capture_default_str();
  read->add_flag("--timing", line->read.timing,
                 Tr("Show where the time of a serial read went", "显示串口读卡各步骤的用时"));
  read->add_flag("--trace", line->read.trace,
                 Tr("Show what travels on a serial line", "显示串口上收发的内容"));
  CLI::Option* record =
      read->add_option("--record", line->read.record,
                       Tr("Write what travels on a serial line to this file, for simulate --replay",
                          "把串口上收发的内容写入此文件，供 simulate --replay 使用"))
          ->type_name("FILE");
  for (const char* other : {"--watch", "--raise-baud"}) {
    for (const char* tap : {"--timing", "--trace", "--record"})
      read->get_option(tap)->excludes(read->get_option(other));
  }
  read->add_option("--native", line->read.output.native,
                   Tr("Write the card's native data to this file", "把卡的原始数据写入此文件"))
      ->type_name("FILE");
  AddOutput(read, &line->read.output);
  record->excludes(read->get_option("--redact"));
}

void AddDevices(CLI::App& app, CommandLine* line) {
  CLI::App* devices =
      app.add_subcommand("devices", Tr("Readers and ports on this machine", "本机的读卡器和串口"));
  AddJson(devices, &line->devices.json);
  devices->add_flag("--known", line->devices.known,
                    Tr("List the USB ids that are looked for", "列出所寻找的 USB 标识"));
  devices
      ->add_option("--probe", line->devices.probe,
                   Tr("Ask this device whether it is a reader", "询问此设备是否为读卡器"))
      ->type_name("DEVICE");
  devices
      ->add_option("--baud,-b", line->devices.baud,
                   Tr("Serial speed for --probe, in bit/s", "--probe 所用的串口波特率（bit/s）"))
      ->capture_default_str();
  AddUsbIds(devices, &line->devices.usb_ids);
}

void AddDecode(CLI::App& app, CommandLine* line) {
  CLI::App* decode =
      app.add_subcommand("decode", Tr("Show a saved card answer", "显示保存下来的卡应答"));
  decode
      ->add_option("FILE", line->decode.file,
                   Tr("Native data, as qlid read --native saves it; - for standard input; with "
                      "--packet also the bytes in hexadecimal",
                      "qlid read --native 保存的原始数据；- 表示标准输入；与 --packet "
                      "合用时也可以是十六进制字节"))
      ->required();
  decode->add_flag("--explain", line->decode.explain, Tr("Every byte's meaning", "逐字节说明含义"));
  CLI::Option* packet =
      decode->add_flag("--packet", line->decode.packet,
                       Tr("One reader packet or card-module frame of a line trace, field by field",
                          "线路记录中的一个数据包或安全模块帧，逐字段说明"));
  AddOutput(decode, &line->decode.output);
  for (const char* other : {"--explain", "--photo", "--picture"})
    packet->excludes(decode->get_option(other));
}

void AddSimulate(CLI::App& app, CommandLine* line) {
  CLI::App* simulate = app.add_subcommand(
      "simulate", Tr("A simulated reader on a pseudo-terminal, with specimen cards",
                     "伪终端上的模拟读卡器，带样本卡"));
  AddCard(simulate, &line->simulate.card);
  simulate->add_option("--person", line->simulate.person,
                       Tr("Specimen person; \"help\" lists them", "样本人物；\"help\" 列出全部"));
  simulate->add_flag("--fingerprints", line->simulate.fingerprints,
                     Tr("The card carries two fingerprint templates", "卡中含两个指纹模板"));
  simulate->add_option(
      "--fault", line->simulate.fault,
      Tr("Misbehave by name; \"help\" lists the names", "按名称模拟故障；\"help\" 列出名称"));
  simulate
      ->add_option(
          "--link", line->simulate.link,
          Tr("Symbolic link to the tty, removed at the end", "建立指向 tty 的符号链接，结束时删除"))
      ->type_name("FILE");
  simulate
      ->add_option("--replay", line->simulate.replay,
                   Tr("Answer as the reader did in this file of read --record",
                      "按 read --record 所记录的文件应答"))
      ->type_name("FILE")
      ->excludes(simulate->get_option("--fault"));
  simulate->add_flag("--trace", line->simulate.trace, Tr("Show what travels", "显示收发的内容"));
}

void AddDoctor(CLI::App& app, CommandLine* line) {
  CLI::App* doctor =
      app.add_subcommand("doctor", Tr("Find out why reading does not work", "查找不能读卡的原因"));
  ReadRequest& request = line->doctor.request;
  request.device.clear();
  AddDevice(doctor, &request.device,
            Tr("Ask this reader: \"HID\", or a serial port such as /dev/ttyUSB0",
               "询问此读卡器：\"HID\"，或串口，如 /dev/ttyUSB0"));
  AddBaud(doctor, &request.baud);
  AddUsbIds(doctor, &request.usb_ids);
  AddJson(doctor, &line->doctor.json);
  doctor->add_flag(
      "--print-udev-rules", line->doctor.print_udev_rules,
      Tr("Print the udev rules for the known USB readers", "打印已知 USB 读卡器的 udev 规则"));
}

void AddResetBaud(CLI::App& app, CommandLine* line) {
  CLI::App* reset = app.add_subcommand("reset-baud", Tr("Bring a serial reader back to 9600 bit/s",
                                                        "使串口读卡器恢复到 9600 bit/s"));
  AddDevice(reset, &line->reset_baud.device,
            Tr("Serial port, such as /dev/ttyUSB0", "串口，如 /dev/ttyUSB0"));
  reset
      ->add_option("--baud,-b", line->reset_baud.baud,
                   Tr("Speed that it was left at, in bit/s", "它所停留的波特率（bit/s）"))
      ->capture_default_str();
}

void AddExplain(CLI::App& app, CommandLine* line) {
  CLI::App* explain = app.add_subcommand(
      "explain", Tr("What a result code means and what to do", "结果码的含义和处理办法"));
  explain->add_option("CODE", line->explain.code,
                      Tr("Published result code, such as -5; without one, all of them",
                         "公布的结果码，如 -5；不给出则列出全部"));
  explain->add_flag("--scdoc", line->explain.manual)->group("");  // for the manual page
  explain->prefix_command();
}

void AddLog(CLI::App& app, CommandLine* line) {
  CLI::App* log = app.add_subcommand("log", Tr("Show the library's log", "显示库的日志"));
  log->add_option("FILE", line->log.file,
                  Tr("Another log; - for standard input", "另一个日志文件；- 表示标准输入"));
  log->add_flag("--redact", line->log.redact, Tr("Mask personal data", "遮盖个人数据"));
}

void AddCompletion(CLI::App& app, CommandLine* line) {
  CLI::App* completion = app.add_subcommand(
      "completion", Tr("Print a completion script for a shell", "打印 shell 的补全脚本"));
  completion->add_option("SHELL", line->shell, Tr("Shell", "shell 名称"))
      ->required()
      ->check(OneOf({"bash", "zsh", "fish"}));
}

}  // namespace

void AddOptions(CLI::App& app, CommandLine* line) {
  AddCommonOptions(app, line);
  AddDemo(app, line);
  AddDevices(app, line);
  AddDoctor(app, line);
  AddRead(app, line);
  AddDecode(app, line);
  AddSimulate(app, line);
  AddResetBaud(app, line);
  AddExplain(app, line);
  AddLog(app, line);
  AddCompletion(app, line);
}

}  // namespace qlid
