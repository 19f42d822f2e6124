#include "tests/failures/scenarios.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "quillonid/carddata.h"
#include "quillonid/images.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/results.h"
#include "quillonid/support.h"
#include "quillonid/transport.h"
#include "tests/failures/world.h"
#include "tests/testing/private_root.h"
#include "tests/usb/fake_libusb.h"

namespace failures {
namespace {

constexpr char kPhoto[] = "photo.bmp";
constexpr char kWritten[] = "written";
constexpr char kCopy[] = "copy";
constexpr char kContent[] = "content";  // written by a scenario's preparation
constexpr char kSettings[] = "settings.ini";
constexpr int kTimeOut = 1;  // seconds that a read may take
constexpr bool kLogged = true, kNotLogged = false;
constexpr bool kEachCallOnce = true;

template <typename Record>
std::string BytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Preparations ----------------------------------------------------------------------------------

void PutCard(const char* specimen, bool fingerprints) {
  std::filesystem::copy_file(QL_SPECIMEN_DECODER, kDecoderFile,
                             std::filesystem::copy_options::overwrite_existing);
  TheWorld().module.PutCard(simulator::MakeCard(specimen, fingerprints));
  fake_libusb::Now().driver_active = 1;
  fake_libusb::Now().devices = fake_libusb::State().devices;
}

void Nothing() {}
void Resident() { PutCard("resident", false); }
void ResidentWithFingerprints() { PutCard("resident", true); }
void Foreigner() { PutCard("foreigner", false); }
void ForeignerWithFingerprints() { PutCard("foreigner", true); }
void Permit() { PutCard("permit", false); }
void PermitWithFingerprints() { PutCard("permit", true); }

void RaisedBaud() {
  Resident();
  TheWorld().module.SetSpeedMatters(true);
  QL_APP_Id_RaiseBaundFlag(1);
}

// The reader that is tried last: nothing comes after it to close what it left open.
void LastUsbId() {
  Resident();
  fake_libusb::Now().devices = {
      {0x2B46, 0xBC01}
  };
}

void NarrowLine() {
  Resident();
  TheWorld().room = 4;
}

void OneCommand() {
  Resident();
  APP_ID_SetOneInstrReadInfo(1);
}

void SmallFiles() {
  WriteWholeFile(PathOf(kContent), std::string(5000, 'c'));
  WriteWholeFile(PathOf(kSettings),
                 "[Reader]\nPort=/dev/ttyUSB0\nBaud=115200\n" + std::string(6000, '#') + "\n");
}

// Whole reads -----------------------------------------------------------------------------------

template <typename Record>
using Read = int (*)(const char*, const char*, long, long, char*, Record*);

template <typename Record>
StepResult ReadFrom(const char* device, long baud, const char* photo, Read<Record> read) {
  std::string path = photo;
  if (!path.empty()) path = PathOf(path);
  Record record = {};
  const int result = read(device, "", baud, kTimeOut, path.data(), &record);
  return {result, BytesOf(record)};
}

template <typename Record>
StepResult ReadTty(Read<Record> read, long baud = 9600) {
  return ReadFrom(TheWorld().tty.path().c_str(), baud, kPhoto, read);
}

StepResult ReadJsonFrom(const char* device, int fingerprints, int photo) {
  APP_ID_IDCardAddPhotoDataToJsonFlag(photo);
  std::string path = PathOf(kPhoto);
  std::string json(QL_JSON_SIZE, '\0');
  const int result = APP_ID_ReadCollectIDCardInfo(device, "", 9600, kTimeOut, fingerprints,
                                                  path.data(), json.data());
  return {result, json};
}

StepResult ReadResident() { return ReadTty(APP_ID_ReadChinaIDCard); }
StepResult ReadCombined() { return ReadTty(APP_ID_ReadIDCard_FP); }
StepResult ReadForeigner() { return ReadTty(APP_ID_ReadForeignerIDCard); }
StepResult ReadForeignerFp() { return ReadTty(APP_ID_ReadForeignerIDCard_FP); }
StepResult ReadPermit() { return ReadTty(APP_ID_ReadGATIDCard); }
StepResult ReadPermitFp() { return ReadTty(APP_ID_ReadGATIDCard_FP); }
StepResult ReadCollect() { return ReadTty(APP_ID_ReadCollectIDCard); }
StepResult ReadCollectFp() { return ReadTty(APP_ID_ReadCollectIDCard_FP); }
StepResult ReadFast() { return ReadTty(APP_ID_ReadCollectIDCard, 115200); }
StepResult ReadTextOnly() {
  return ReadFrom(TheWorld().tty.path().c_str(), 9600, "", APP_ID_ReadCollectIDCard_FP);
}
StepResult ReadUsb() { return ReadFrom("HID", 9600, kPhoto, APP_ID_ReadChinaIDCard); }
StepResult ReadJson() { return ReadJsonFrom(TheWorld().tty.path().c_str(), 1, 1); }
StepResult ReadUsbJson() { return ReadJsonFrom("HID", 1, 1); }

// What a read may end with when a call fails: each function has its place in it.
struct CallFailures {
  std::vector<std::string_view> calls;
  std::vector<int> results;
};

std::vector<int> ReadFailuresOf(std::string_view call) {
  // clang-format off
  static const CallFailures rows[] = {
      // The port, or the photo's file.
      {{"open"},                                           {-1, -7}},
      {{"tcgetattr", "tcsetattr"},                         {-1}},
      {{"libusb_init", "libusb_get_device_list", "libusb_get_device_descriptor", "libusb_open",
        "libusb_kernel_driver_active", "libusb_detach_kernel_driver", "libusb_claim_interface"}, {-1}},
      {{"libusb_reset_device"},                            {-3}},
      // Bytes on their way: nothing came, or not in time.
      {{"read", "poll", "libusb_bulk_transfer"},           {-2, -3, -5}},
      {{"clock_gettime"},                                  {-3, -5}},
      // Commands, and the photo's file.
      {{"write"},                                          {-3, -5, -7}},
      {{"dlopen", "dlsym", "ftruncate", "fstat", "close"}, {-7}},
      {{"malloc", "calloc"},                               {-7}},
  };
  // clang-format on
  for (const CallFailures& row : rows) {
    if (std::find(row.calls.begin(), row.calls.end(), call) != row.calls.end()) return row.results;
  }
  return {};
}

// No memory for the text is told apart from everything else.
std::vector<int> JsonReadFailuresOf(std::string_view call) {
  constexpr int kNoText = -100;
  if (call == "cJSON_PrintBuffered") return {kNoText};
  std::vector<int> results = ReadFailuresOf(call);
  if (call == "malloc") results.push_back(kNoText);
  return results;
}

// A plain record stays empty without its photo.
Step Plain(StepResult (*run)()) {
  return {"read", run, QL_SUCCESS, {}, Leaves::kNothing, ReadFailuresOf};
}

Step WithTemplates(StepResult (*run)()) {
  return {"read", run, QL_SUCCESS, {}, Leaves::kTextWithoutPhoto, ReadFailuresOf};
}

Step Json(StepResult (*run)()) {
  return {"read", run, QL_SUCCESS, {}, Leaves::kNothing, JsonReadFailuresOf};
}

// The terminal's auxiliary port, which whole reads do not use: one search through it.
StepResult SearchThroughAuxPort() {
  QL_TRANSPORT_DESCRIPTION port = {};
  port.nKind = QL_KIND_SERIAL;
  port.nAuxNumber = 1;
  port.nAuxParam = 1;
  port.nAuxCloseFlag = 1;
  port.nBaud = 9600;
  port.nTimeOut = kTimeOut;
  constexpr unsigned char search[] = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x03, 0x20, 0x01, 0x22};
  std::string reply(15, '\0');
  int result = COMM_Dev_OpenTransPort(&port);
  if (result == RET_PUB_SUCCESS) {
    result = RET_PUB_WRITE_ERROR;
    if (COMM_Dev_WriteDataToTransPort(search, sizeof search) == sizeof search) {
      result = COMM_Dev_ReadDataFromTransPort(reinterpret_cast<unsigned char*>(reply.data()),
                                              static_cast<int>(reply.size()));
    }
    COMM_Dev_CloseTransPort();
  }
  return {result, reply};
}

StepResult ReadAndWriteUnblocked() {
  unsigned char bytes[8] = {'x'};
  int result = COMM_Com_OpenLinux(TheWorld().tty.path().c_str(), 9600);
  if (result == RET_PUB_SUCCESS) {
    result = WriteUnBlock(bytes, sizeof bytes);
    if (ReadUnBlock(bytes, sizeof bytes) > 0) result = 100;  // Nobody has answered.
    ResetAux();
    ClearReceiveBuffer();
    COMM_Com_CloseLinux();
  }
  return {result, ""};
}

// JSON ------------------------------------------------------------------------------------------

StepResult PackPermit() {
  APP_ID_IDCardAddPhotoDataToJsonFlag(1);
  PERSONINFO_GAT_FP record = {};
  std::strcpy(record.name, "name \"quoted\"\n");
  std::string json(QL_JSON_SIZE, '\0');
  const int result = tFuncPackGATJson(record, json.data());
  APP_ID_IDCardAddPhotoDataToJsonFlag(0);
  return {result, json};
}

constexpr char kPermitText[] = R"({"CardType":"J","Name":"name","IDNumber":"123","extra":[1,{}]})";

StepResult ParsePermit() {
  PERSONINFO_CHA china = {};
  PERSONINFO_FOR foreign = {};
  PERSONINFO_GAT permit = {};
  const int result = tFuncConvertIdInfotoStruct(kPermitText, &china, &foreign, &permit);
  return {result, BytesOf(permit)};
}

StepResult ParseCollect() {
  PERSONINFO_COLLECT_FP record = {};
  return {tFuncConvertJsontoCollectStruct(kPermitText, &record), BytesOf(record)};
}

StepResult OneText() {
  std::string text(64, '\0');
  return {tFuncGetStringFromJson(kPermitText, "IDNumber", text.data()), text};
}

StepResult HeadImageFromJson() {
  std::string path = TemporaryFolder();
  path.resize(QL_IMAGE_PATH_SIZE);
  const int result = APP_ID_SaveCollectInfoHeadImg(kPermitText, path.data());
  return {result, ""};
}

// Images, files, INI, log -----------------------------------------------------------------------

PERSONINFO Resident(const char* number) {
  PERSONINFO record = {};
  record.cardType[0] = ' ';
  std::strcpy(record.name, "name");
  std::strcpy(record.cardId, number);
  std::strcpy(record.nationCode, "01");
  return record;
}

StepResult FrontImage() {
  const PERSONINFO record = Resident("123");
  std::string path = PathOf(kPhoto);
  path.resize(QL_IMAGE_PATH_SIZE);
  return {APP_ID_SaveFrontImg(&record, path.data()), ""};
}

StepResult ImageText() {
  const PERSONINFO record = Resident("123");
  std::string text(60'000, '\0');
  return {APP_ID_GetImgBase64(0, &record, text.data(), static_cast<int>(text.size())), text};
}

StepResult Bmp() {
  const std::string pixels(std::size_t{102} * 126 * 3, 'p');
  const auto* const bytes = reinterpret_cast<const unsigned char*>(pixels.data());
  return {SaveBmp(PathOf(kPhoto).c_str(), bytes, 102, 126), ""};
}

StepResult ReadAFile() {
  std::string content(6000, '\0');
  int room = 6000;
  const int result = ReadFileData(PathOf(kContent).c_str(),
                                  reinterpret_cast<unsigned char*>(content.data()), &room);
  return {result, content};
}

StepResult WriteAFile() {
  const std::string content(5000, 'w');
  return {WriteFileData(PathOf(kWritten).c_str(), content.data(), 5000), ""};
}

StepResult CopyAFile() {
  return {CopyFile(PathOf(kContent).c_str(), PathOf(kCopy).c_str(), 1), ""};
}

StepResult KeepAFile() {
  return {CopyFile(PathOf(kContent).c_str(), PathOf(kSettings).c_str(), 0), ""};
}

StepResult LookForAFolder() { return {PathIsDirectory(TemporaryFolder().c_str()), ""}; }

StepResult FileAsText() {
  std::string text(8000, '\0');
  return {GetBase64DataEx(PathOf(kContent).c_str(), text.data()), text};
}

StepResult SizeAsText() {
  std::string text(8000, '\0');
  int size = 8000;
  const int result = GetBase64FromFile(PathOf(kContent).c_str(), text.data(), &size);
  return {result, result == 0 ? std::to_string(size) : ""};
}

// 0 the value, -1 the default, -2 anything else.
StepResult IniText() {
  const std::string value = GetIniKeyString("Reader", "Port", "default", PathOf(kSettings).c_str());
  return {value == "/dev/ttyUSB0" ? 0 : value == "default" ? -1 : -2, ""};
}

StepResult IniNumber() {
  return {static_cast<int>(GetIniKeyInt("Reader", "Baud", "7", PathOf(kSettings).c_str())), ""};
}

StepResult LongDump() {
  const std::string data(5000, 'd');
  return {DPrintDataHexToFile("data", data.data(), static_cast<int>(data.size())), ""};
}

StepResult LogLine() { return {DPrintLogToFile("%s", "line"), ""}; }

}  // namespace

void StartAfresh() {
  QL_APP_Id_RaiseBaundFlag(0);
  APP_ID_SetOneInstrReadInfo(0);
  APP_ID_IDCardAddPhotoDataToJsonFlag(0);
  TheWorld().module.SetSpeedMatters(false);
  TheWorld().room = SIZE_MAX;
  for (const auto& entry : std::filesystem::directory_iterator(TemporaryFolder())) {
    std::filesystem::remove(entry.path());
  }
}

std::string PathOf(const std::string& file) { return TemporaryFolder() + "/" + file; }

// clang-format off
const std::vector<Scenario>& Scenarios() {
  // Name, preparation, steps, files that may be there at the end.
  static const std::vector<Scenario> all = {
      {"Resident",                  Resident,                  {Plain(ReadResident)},          {kPhoto}},
      {"ResidentWithFingerprints",  ResidentWithFingerprints,  {WithTemplates(ReadCombined)},  {kPhoto}},
      {"Foreigner",                 Foreigner,                 {Plain(ReadForeigner)},         {kPhoto}},
      {"ForeignerWithFingerprints", ForeignerWithFingerprints, {WithTemplates(ReadForeignerFp)}, {kPhoto}},
      {"Permit",                    Permit,                    {Plain(ReadPermit)},            {kPhoto}},
      {"PermitWithFingerprints",    PermitWithFingerprints,    {WithTemplates(ReadPermitFp)},  {kPhoto}},
      {"CollectWithoutPhoto",       ForeignerWithFingerprints, {WithTemplates(ReadTextOnly)},  {}},
      {"Json",                      ResidentWithFingerprints,  {Json(ReadJson)},               {kPhoto}},
      {"OneCommand",                OneCommand,                {Plain(ReadCollect)},           {kPhoto}},
      {"RaisedBaud",                RaisedBaud,                {Plain(ReadFast)},              {kPhoto}},
      {"NarrowLine",                NarrowLine,                {Plain(ReadCollect)},           {kPhoto}},
      {"Usb",                       Resident,                  {Plain(ReadUsb)},               {kPhoto}},
      {"UsbLastId",                 LastUsbId,                 {Plain(ReadUsb)},               {kPhoto}},
      {"UsbJsonWithFingerprints",   PermitWithFingerprints,    {Json(ReadUsbJson)},            {kPhoto}},
      {"Logged",                    ResidentWithFingerprints,  {WithTemplates(ReadCollectFp)}, {kPhoto}, kLogged},
      {"UsbLogged",                 Resident,                  {Plain(ReadUsb)},               {kPhoto}, kLogged},
      {"AuxPort",                   Resident,
       {{"search", SearchThroughAuxPort, 15,
         {RET_PUB_OPEN_ERROR, -1, RET_PUB_WRITE_ERROR, RET_PUB_READ_ERROR, RET_PUB_TIMEOUT}}},
       {}},
      {"Unblocked",                 Resident,
       {{"write and read", ReadAndWriteUnblocked, 8, {RET_PUB_OPEN_ERROR, -1, 4}}},
       {}, kNotLogged, kEachCallOnce},
      {"JsonBothWays",              Nothing,
       {{"pack",          PackPermit,        0, {-1}},
        {"parse",         ParsePermit,       2, {-2}},
        {"parse collect", ParseCollect,      0, {}, Leaves::kBeginning},
        {"one text",      OneText,           0, {-2}},
        {"head image",    HeadImageFromJson, 0, {-13}}},
       {}},
      {"Images",                    SmallFiles,
       {{"front image", FrontImage, 0,    {-11}},
        {"image text",  ImageText,  -100, {}},
        {"bmp",         Bmp,        1,    {0}}},
       {kPhoto, kContent, kSettings}},
      {"Files",                     SmallFiles,
       {{"read",        ReadAFile,      0, {-1}, Leaves::kBeginning},
        {"write",       WriteAFile,     1, {0}},
        {"copy",        CopyAFile,      1, {0}},
        {"keep",        KeepAFile,      0, {}},
        {"folder",      LookForAFolder, 1, {0}},
        {"base64",      FileAsText,     0, {-2}},
        {"base64 size", SizeAsText,     0, {-2}}},
       {kContent, kSettings, kWritten, kCopy}},
      {"Ini",                       SmallFiles,
       {{"text",   IniText,   0,      {-1}},
        {"number", IniNumber, 115200, {7}}},
       {kContent, kSettings}},
      {"Log",                       Nothing,
       {{"dump", LongDump, 0, {}},
        {"line", LogLine,  0, {}}},
       {}, kLogged},
  };
  return all;
}
// clang-format on

}  // namespace failures
