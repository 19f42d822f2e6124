// qlid from outside: what it prints where, its exit status, its files.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/testing/private_root.h"

namespace {

void InstallSpecimenDecoder() { std::filesystem::copy_file(SPECIMEN_DECODER, kDecoderFile); }

}  // namespace

TEST(QlidDemo, ReadsTheSpecimenCardAndWritesItsPhoto) {
  const std::string photo = TemporaryFolder() + "/specimen.bmp";

  const Output demo = RunQlid({"demo", "--photo", photo});

  EXPECT_EQ(0, demo.exit) << demo.err;
  EXPECT_TRUE(Contains(demo.out, simulator::FindSpecimen("resident")->text.at("name"))) << demo.out;
  EXPECT_TRUE(Contains(demo.out, simulator::FindSpecimen("resident")->text.at("cardId")))
      << demo.out;
  EXPECT_TRUE(Contains(demo.out, "102 x 126")) << demo.out;
  EXPECT_TRUE(Contains(demo.err, "/dev/pts/")) << demo.err;
  EXPECT_EQ(38862U, ReadWholeFile(photo).size());
  EXPECT_EQ(0600, Mode(photo));
}

TEST(QlidDemo, ShowsThePhotoInColourWhenAsked) {
  const std::string photo = TemporaryFolder() + "/specimen.bmp";

  const Output demo = RunQlid({"--color", "always", "demo", "--photo", photo});

  EXPECT_EQ(0, demo.exit) << demo.err;
  EXPECT_TRUE(Contains(demo.out, "\x1b[38;2;")) << demo.out;
  EXPECT_TRUE(Contains(demo.out, "\u2580"));
}

TEST(QlidRead, PrintsTheFieldsOfACard) {
  const Bench bench("permit");

  const Output read = RunQlid(bench.Read());

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, "residence permit for Hong Kong, Macau and Taiwan residents"))
      << read.out;
  EXPECT_TRUE(Contains(read.out, bench.card.person.text.at("name")));
  EXPECT_TRUE(Contains(read.out, bench.card.person.text.at("passNumber")));
  EXPECT_TRUE(Contains(read.out, "check digit right"));
  EXPECT_EQ("", read.err);
}

TEST(QlidRead, WritesNoEscapesAndNoCountdownIntoAPipe) {
  const Bench bench;

  const Output read = RunQlid(bench.Read());

  EXPECT_FALSE(Contains(read.out, "\x1b")) << read.out;
  EXPECT_EQ("", read.err);
}

TEST(QlidRead, CountsDownOnATerminal) {
  simulator::TtyReader reader;
  Program read(Qlid({"read", "--device", reader.path(), "--timeout", "3"}), {}, true);

  EXPECT_TRUE(read.WaitFor("Put the card on the reader: 3 s")) << read.err();
  EXPECT_TRUE(read.WaitFor("Put the card on the reader: 2 s")) << read.err();
}

TEST(QlidRead, GivesOneJsonDocumentWithTheLibrarysObject) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--json"}));

  EXPECT_EQ(0, read.exit) << read.err;
  const Json document = Parse(read.out);
  ASSERT_NE(nullptr, document) << read.out;
  EXPECT_EQ("qlid.read/1", Member(document.get(), "schema"));
  EXPECT_EQ("true", Member(document.get(), "ok"));
  EXPECT_EQ("resident", Member(document.get(), "kind"));
  EXPECT_EQ(bench.card.person.text.at("cardId"), Member(Child(document, "card"), "IDNumber"));
  EXPECT_EQ(" ", Member(Child(document, "card"), "CardType"));
  EXPECT_EQ(bench.reader.path(), Member(Child(document, "reader"), "device"));
}

TEST(QlidRead, TakesTheDeviceFromTheEnvironment) {
  const Bench bench;

  const Output read = RunQlid({"read"}, {"QLID_DEVICE=" + bench.reader.path(), "QLID_BAUD=9600"});

  EXPECT_EQ(0, read.exit) << read.err;
}

TEST(QlidRead, ReadsFingerprints) {
  const Bench bench("resident", true);

  const Output read = RunQlid(bench.Read({"--fingerprints", "--json"}));

  const Json document = Parse(read.out);
  ASSERT_NE(nullptr, document) << read.out;
  EXPECT_EQ(1024U, Member(Child(document, "card"), "FingerTemp1").size());
  EXPECT_EQ(1024U, Member(Child(document, "card"), "FingerTemp2").size());
}

TEST(QlidRead, SavesTheNativeDataForItsOwnerAlone) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/card.bin";

  const Output read = RunQlid(bench.Read({"--native", file}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_EQ(Text(simulator::NativeData(bench.card, false)), ReadWholeFile(file));
  EXPECT_EQ(0600, Mode(file));
}

TEST(QlidRead, WritesThePhotoAsBmpAndPng) {
  NEEDS_PRIVATE_ROOT();
  InstallSpecimenDecoder();
  const Bench bench;
  const std::string folder = TemporaryFolder();

  EXPECT_EQ(0, RunQlid(bench.Read({"--photo", folder + "/p.bmp"})).exit);
  EXPECT_EQ(0, RunQlid(bench.Read({"--photo", folder + "/p.png"})).exit);

  EXPECT_EQ(38862U, ReadWholeFile(folder + "/p.bmp").size());
  EXPECT_EQ("\x89PNG\r\n\x1a\n", ReadWholeFile(folder + "/p.png").substr(0, 8));
  EXPECT_EQ(0600, Mode(folder + "/p.png"));
}

TEST(QlidRead, GivesTheTextWhenThereIsNoDecoder) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  const std::string file = TemporaryFolder() + "/p.bmp";

  const Output read = RunQlid(bench.Read({"--photo", file}));

  EXPECT_EQ(7, read.exit);
  EXPECT_TRUE(Contains(read.out, bench.card.person.text.at("name"))) << read.out;
  EXPECT_TRUE(Contains(read.err, "the text was read, the photo was not decoded (-7)")) << read.err;
  EXPECT_TRUE(Contains(read.err, "/libwlt.so")) << read.err;
  EXPECT_FALSE(FileExists(file));
}

TEST(QlidRead, RefusesAnotherKind) {
  const Bench bench("permit");

  const Output read = RunQlid(bench.Read({"--kind", "resident"}));

  EXPECT_EQ(6, read.exit);
  EXPECT_EQ("", read.out);
  EXPECT_TRUE(Contains(read.err, "(-11)")) << read.err;
  EXPECT_TRUE(Contains(read.err, "residence permit")) << read.err;
}

TEST(QlidRead, AcceptsTheKindAskedFor) {
  const Bench bench("permit");

  EXPECT_EQ(0, RunQlid(bench.Read({"--kind", "permit"})).exit);
}

TEST(QlidRead, TellsAMissingCardFromASilentReader) {
  simulator::TtyReader empty;
  const Output no_card = RunQlid({"read", "--device", empty.path(), "--timeout", "1"});
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});
  const Output no_answer = RunQlid({"read", "--device", silent.path(), "--timeout", "1"});

  EXPECT_EQ(4, no_card.exit);
  EXPECT_TRUE(Contains(no_card.err, "no card within 1 s (-5)")) << no_card.err;
  EXPECT_TRUE(Contains(no_card.err, "card module answered")) << no_card.err;
  EXPECT_EQ(4, no_answer.exit);
  EXPECT_TRUE(Contains(no_answer.err, "did not answer within 1 s (-5)")) << no_answer.err;
  EXPECT_TRUE(Contains(no_answer.err, "--baud 9600")) << no_answer.err;
}

TEST(QlidRead, SaysThatTheReaderWasPulled) {
  Bench bench;
  bench.reader.SetFault({simulator::FaultId::kHangUp, 700});

  const Output read = RunQlid(bench.Read({"--timeout", "2"}));

  EXPECT_NE(0, read.exit);
  EXPECT_TRUE(Contains(read.err, "(-5)")) << read.err;
}

TEST(QlidRead, NamesAMissingPort) {
  const Output read = RunQlid({"read", "--device", "/dev/quillonid-none"});

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "there is no /dev/quillonid-none (-1)")) << read.err;
}

TEST(QlidRead, FailsInJsonToo) {
  const Output read = RunQlid({"read", "--json", "--device", "/dev/quillonid-none"});

  EXPECT_EQ(3, read.exit);
  const Json document = Parse(read.out);
  ASSERT_NE(nullptr, document) << read.out;
  EXPECT_EQ("false", Member(document.get(), "ok"));
  EXPECT_EQ("-1", Member(Child(document, "error"), "code"));
  EXPECT_EQ("device", Member(Child(document, "error"), "name"));
  EXPECT_EQ("", read.err);
}

TEST(QlidRead, CancelsOnAnInterruptAndGivesThePortBack) {
  simulator::TtyReader reader;
  Program read(Qlid({"read", "--device", reader.path(), "--timeout", "60"}));
  ASSERT_TRUE(reader.WaitForRequests(1, 10'000));

  read.Signal(SIGINT);
  const Output cancelled = read.Finish();

  EXPECT_EQ(130, cancelled.exit);
  EXPECT_TRUE(Contains(cancelled.err, "cancelling")) << cancelled.err;
  EXPECT_TRUE(Contains(cancelled.err, "cancelled (-9)")) << cancelled.err;
}

TEST(QlidRead, RefusesWhatTheLibraryWouldMisunderstand) {
  const Output com = RunQlid({"read", "--device", "COM1"});
  const Output speed = RunQlid({"read", "--device", "/dev/ttyS0", "--baud", "14400"});
  const Output limit = RunQlid({"read", "--timeout", "0"});

  EXPECT_EQ(2, com.exit);
  EXPECT_TRUE(Contains(com.err, "\"COM1\" names no device on Linux")) << com.err;
  EXPECT_EQ(2, speed.exit);
  EXPECT_TRUE(Contains(speed.err, "230400")) << speed.err;
  EXPECT_EQ(2, limit.exit);
}

TEST(QlidRead, MasksWhatIdentifiesTheHolder) {
  const Bench bench;
  const std::string& name = bench.card.person.text.at("name");
  const std::string& number = bench.card.person.text.at("cardId");

  const Output people = RunQlid(bench.Read({"--redact"}));
  const Output programs = RunQlid(bench.Read({"--redact", "--json"}));

  for (const std::string& text : {people.out, programs.out}) {
    EXPECT_FALSE(Contains(text, name)) << text;
    EXPECT_FALSE(Contains(text, number)) << text;
    EXPECT_FALSE(Contains(text, bench.card.person.text.at("address"))) << text;
    EXPECT_TRUE(Contains(text, number.substr(0, 6) + "********" + number.substr(14))) << text;
  }
}

TEST(QlidWatch, TellsEachCardOnce) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--json", "--timeout", "1"})));
  ASSERT_TRUE(watch.WaitFor("999999199001010024")) << watch.err();
  ASSERT_TRUE(bench.reader.WaitForRequests(bench.reader.Requests().size() + 4,
                                           20'000));  // It was read again.

  bench.reader.RemoveCard();
  ASSERT_TRUE(watch.WaitFor("card taken away")) << watch.err();
  bench.reader.PutCard(simulator::MakeCard("permit"));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
  watch.Signal(SIGINT);
  const Output output = watch.Finish();

  EXPECT_EQ(0, output.exit);
  EXPECT_EQ(2, std::count(output.out.begin(), output.out.end(), '\n')) << output.out;
  EXPECT_TRUE(Contains(output.err, "stopped after 2 cards, 0 failures")) << output.err;
}

// The device is a link, as udev makes them; a terminal's own name may be another program's by then.
TEST(QlidWatch, WaitsForAReaderThatWasPulled) {
  const std::string link = TemporaryFolder() + "/reader";
  auto reader = std::make_unique<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("resident"));
  std::filesystem::create_symlink(reader->path(), link);
  Program watch(
      Qlid({"read", "--watch", "--json", "--timeout", "1", "--device", "/dev/.." + link}));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  std::filesystem::remove(link);
  reader.reset();
  ASSERT_TRUE(watch.WaitFor("waiting for it to come back")) << watch.err();
  reader = std::make_unique<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("permit"));
  std::filesystem::create_symlink(reader->path(), link);

  EXPECT_TRUE(watch.WaitFor("reader is back")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
  watch.Signal(SIGINT);
  EXPECT_EQ(0, watch.Finish().exit);
}

TEST(QlidDecode, GivesTheRecordThatTheReadGave) {
  const Bench bench("foreigner");
  const std::string file = TemporaryFolder() + "/card.bin";
  const Output read = RunQlid(bench.Read({"--json", "--native", file}));

  const Output decoded = RunQlid({"decode", "--json", file});

  EXPECT_EQ(0, decoded.exit) << decoded.err;
  const Json first = Parse(read.out);
  const Json second = Parse(decoded.out);
  ASSERT_NE(nullptr, second) << decoded.out;
  EXPECT_TRUE(cJSON_Compare(Child(first, "card"), Child(second, "card"), true)) << decoded.out;
  EXPECT_EQ("foreigner", Member(second.get(), "kind"));
}

TEST(QlidDecode, RefusesWhatIsNoCardAnswer) {
  const std::string file = TemporaryFolder() + "/broken.bin";
  WriteWholeFile(file, std::string(1296, 'x'));

  const Output decoded = RunQlid({"decode", file});

  EXPECT_EQ(5, decoded.exit);
  EXPECT_TRUE(Contains(decoded.err, "1296 bytes; an answer has 1295, 1297 or 2321")) << decoded.err;
}

TEST(QlidDecode, NamesAFileThatIsNotThere) {
  const Output decoded = RunQlid({"decode", "/quillonid-none.bin"});

  EXPECT_EQ(2, decoded.exit);
  EXPECT_TRUE(Contains(decoded.err, "No such file")) << decoded.err;
}

TEST(QlidSimulate, ServesAnotherProgramUntilItIsStopped) {
  const std::string link = TemporaryFolder() + "/reader";
  Program simulate(Qlid({"simulate", "--card", "foreigner", "--trace", "--link", link}));
  ASSERT_TRUE(simulate.WaitFor("Ctrl-C ends it.")) << simulate.err();
  const std::string path = std::filesystem::read_symlink(link);

  const Output read = RunQlid({"read", "--device", path});

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, simulator::FindSpecimen("foreigner")->text.at("EngName")))
      << read.out;
  EXPECT_TRUE(simulate.WaitFor("AA AA AA 96 69 00 03 30 01 32")) << simulate.err();
  simulate.Signal(SIGINT);
  const Output simulated = simulate.Finish();
  EXPECT_EQ(0, simulated.exit);
  EXPECT_EQ(path + "\n", simulated.out);
  EXPECT_FALSE(std::filesystem::is_symlink(link));
}

TEST(QlidSimulate, ListsFaultsAndPersons) {
  const Output faults = RunQlid({"simulate", "--fault", "help"});
  const Output persons = RunQlid({"simulate", "--person", "help"});

  for (const simulator::FaultRow& row : simulator::FaultTable()) {
    EXPECT_TRUE(Contains(faults.out, row.name)) << row.name;
  }
  for (const simulator::Specimen& person : simulator::Specimens()) {
    EXPECT_TRUE(Contains(persons.out, person.id)) << person.id;
  }
}

TEST(QlidSimulate, RefusesAnUnknownFault) {
  const Output simulate = RunQlid({"simulate", "--fault", "explode"});

  EXPECT_EQ(2, simulate.exit);
  EXPECT_TRUE(Contains(simulate.err, "there is no fault \"explode\"")) << simulate.err;
}

TEST(Qlid, SpeaksChineseWhereTheEnvironmentDoes) {
  const Bench bench;

  EXPECT_TRUE(Contains(RunQlid(bench.Read(), {"LANG=zh_CN.UTF-8"}).out, "居民身份证"));
  EXPECT_TRUE(Contains(RunQlid({"--lang", "zh", "decode", "/quillonid-none"}).err, "无法读取"));
}

TEST(Qlid, NamesAnUnknownCommandAndTheOneMeant) {
  const Output output = RunQlid({"reed"});

  EXPECT_EQ(2, output.exit);
  EXPECT_TRUE(Contains(output.err, "unknown command \"reed\"; did you mean \"read\"?"))
      << output.err;
}

TEST(Qlid, RefusesAMisspeltOption) {
  const Output output = RunQlid({"read", "--tiemout", "5"});

  EXPECT_EQ(2, output.exit);
  EXPECT_TRUE(Contains(output.err, "--tiemout")) << output.err;
}

TEST(Qlid, PrintsHelpAndVersionToStandardOutput) {
  const Output bare = RunQlid({});
  const Output help = RunQlid({"--help"});
  const Output version = RunQlid({"--version"});

  EXPECT_EQ(0, bare.exit);
  EXPECT_TRUE(Contains(bare.out, "simulate"));
  EXPECT_EQ(0, help.exit);
  EXPECT_TRUE(Contains(help.out, "demo"));
  EXPECT_EQ(0, version.exit);
  EXPECT_EQ(0U, version.out.find("qlid 1.0.0\nlibquillonid 1.0.0 (libquillonid.so.1), libusb 1."))
      << version.out;
  EXPECT_TRUE(Contains(version.out, std::string(", cJSON ") + cJSON_Version())) << version.out;
}

TEST(Qlid, WarnsOnATerminalThatIsNotUtf8) {
  Program ascii(Qlid({"devices", "--known"}), {"LANG=C"}, true);
  Program utf8(Qlid({"devices", "--known"}), {"LANG=C.UTF-8"}, true);

  EXPECT_TRUE(Contains(ascii.Finish().err, "export LC_ALL=C.UTF-8"));
  EXPECT_EQ("", utf8.Finish().err);
  EXPECT_EQ("", RunQlid({"devices", "--known"}, {"LANG=C"}).err);
}

TEST(QlidDevices, AsksASerialPortWhetherItIsAReader) {
  const Bench bench;
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});

  const Output reader = RunQlid({"devices", "--probe", bench.reader.path()});
  const Output other = RunQlid({"devices", "--probe", silent.path()});

  EXPECT_EQ(0, reader.exit) << reader.err;
  EXPECT_TRUE(Contains(reader.out, "a reader answered: its card module is ready")) << reader.out;
  EXPECT_EQ(3, other.exit);
  EXPECT_TRUE(Contains(other.out, "nothing answered")) << other.out;
}

TEST(QlidDevices, RefusesToAskWithWhatTheLibraryWouldMisunderstand) {
  const Bench bench;

  const Output speed = RunQlid({"devices", "--probe", bench.reader.path(), "--baud", "14400"});
  const Output device = RunQlid({"devices", "--probe", "COM1"});

  EXPECT_EQ(2, speed.exit);
  EXPECT_EQ("", speed.out);
  EXPECT_TRUE(Contains(speed.err, "14400 is not a speed of this reader link")) << speed.err;
  EXPECT_TRUE(bench.reader.Requests().empty());
  EXPECT_EQ(2, device.exit);
  EXPECT_TRUE(Contains(device.err, "\"COM1\" names no device on Linux")) << device.err;
}

TEST(QlidDevices, SayWhyAPortThatIsAskedDoesNotOpen) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  const Rival rival(bench.reader.path());

  const Output held = RunQlid({"devices", "--probe", bench.reader.path()});
  const Output missing = RunQlid({"devices", "--probe", "/dev/quillonid-none"});

  EXPECT_EQ(3, held.exit);
  EXPECT_TRUE(Contains(held.out, bench.reader.path() + "  115200 bit/s  cannot be opened\n"));
  EXPECT_TRUE(Contains(held.err, "Held by  " + rival.Named())) << held.err;
  EXPECT_TRUE(Contains(held.err, "  Next     ")) << held.err;
  EXPECT_EQ(3, missing.exit);
  EXPECT_TRUE(Contains(missing.err, "there is no /dev/quillonid-none")) << missing.err;
}

TEST(QlidDevices, AskForPrograms) {
  const Bench bench;
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});

  const Json ready = Parse(RunQlid({"devices", "--json", "--probe", bench.reader.path()}).out);
  const Json mute = Parse(RunQlid({"devices", "--json", "--probe", silent.path()}).out);
  const Output wrong = RunQlid({"devices", "--json", "--probe", "COM1"});
  const Json known = Parse(RunQlid({"devices", "--json", "--known"}).out);

  EXPECT_EQ("ready", Member(ready.get(), "answer"));
  EXPECT_EQ("true", Member(ready.get(), "ok"));
  EXPECT_EQ("silent", Member(mute.get(), "answer"));
  EXPECT_EQ("silent", Member(Child(mute, "error"), "reason"));
  EXPECT_EQ("refused", Member(Parse(wrong.out).get(), "answer"));
  EXPECT_EQ("", wrong.err);
  EXPECT_EQ(6, cJSON_GetArraySize(Child(known, "usb")));
}

TEST(QlidDevices, ListsTheKnownUsbIds) {
  const Output known = RunQlid({"devices", "--known"});

  EXPECT_EQ("0403:bcd5\n0403:bcd7\n0403:bc95\n2b46:be11\n2b46:be01\n2b46:bc01\n", known.out);
}

TEST(QlidDevices, RefusesWhatIsNoUsbId) {
  const Output output = RunQlid({"read", "--usb-id", "12345678"});

  EXPECT_EQ(2, output.exit);
  EXPECT_TRUE(Contains(output.err, "no USB id")) << output.err;
}
