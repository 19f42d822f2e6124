#include "tools/qlid/results.h"

#include "quillonid/carddata.h"
#include "quillonid/results.h"

namespace qlid {
namespace {

// clang-format off
constexpr ResultText kResults[] = {
    {QL_SUCCESS, kExitDone, "done",
     "done", "操作成功",
     "The card was read, or the call did what it is for.", "卡片已读出，或调用已完成。",
     "", "", "", "", "qlid demo"},
    {QL_DEVICE_ERROR, kExitNoReader, "device",
     "the reader cannot be opened", "无法打开读卡器",
     "No reader was opened, nothing was sent.", "没有打开读卡器，未发送任何数据。",
     "no reader is plugged in; the device name is wrong; no permission; another program uses it",
     "未插入读卡器；设备名错误；没有权限；被其他程序占用",
     "see which readers are there: qlid devices; find the cause: qlid doctor",
     "查看已连接的读卡器：qlid devices；查找原因：qlid doctor", "qlid read --device /dev/null"},
    {QL_RECEIVE_ERROR, kExitProtocol, "receive",
     "the reader's answer was missing or malformed", "读卡器的应答缺失或格式错误",
     "The reader answered something that has no meaning here; a read ends with it when that was the answer to a select.",
     "读卡器给出了无法识别的应答；选卡时收到此类应答则读卡以此结束。",
     "the line is disturbed; the device is no identity-card reader; the card was moved",
     "线路受干扰；设备不是身份证读卡器；卡片被移动", "check cable and speed, keep the card still, try again",
     "检查线缆和波特率，保持卡片不动后重试", "qlid demo --fault select-unknown"},
    {QL_SEND_ERROR, kExitProtocol, "send",
     "sending to the reader failed", "向读卡器发送失败",
     "A command could not be written to the open reader.", "命令无法写入已打开的读卡器。",
     "the reader was unplugged; the line is blocked", "读卡器被拔出；线路阻塞",
     "plug the reader in again and try again", "重新插入读卡器后重试", "qlid demo --fault blocked"},
    {QL_CHECK_ERROR, kExitProtocol, "check",
     "a reader packet failed its check", "数据包校验错误",
     "Only calls in the packet framing return it: a card read tries a bad answer again until its time is over, and then "
     "returns -5.",
     "仅数据包模式的调用会返回；读卡时错误的应答会重试到超时，然后返回 -5。",
     "the line is disturbed", "线路受干扰", "check cable and speed: --baud; see what is wrong with a packet: qlid decode --packet",
     "检查线缆和波特率：--baud；查看数据包的问题：qlid decode --packet",
     "qlid decode --packet 02303030343332333030303031303403"},
    {QL_TIMEOUT, kExitNoCard, "timeout",
     "no card in time", "超时：未读到卡片",
     "The time of the read is over. The tool then asks the reader once, and tells a missing card from a silent reader.",
     "读卡时间已到。工具会再询问读卡器一次，以区分没有卡片和读卡器无应答。",
     "no card on the reader; the reader is silent: wrong speed, no power; every answer was malformed",
     "读卡器上没有卡片；读卡器无应答：波特率错误或未上电；应答全部错误",
     "put the card flat on the reader and keep it there; more time: --timeout 30",
     "请将卡片平放在读卡器上并保持不动；延长时间：--timeout 30", "qlid demo --fault no-card"},
    {QL_PHOTO_DECODE_ERROR, kExitNoPhoto, "photo",
     "the text was read, the photo was not decoded", "文字已读出，照片未解码",
     "The text was read and the record is filled; only the photo is missing.", "文字已读出且记录完整，仅缺少照片。",
     "no file /libwlt.so; it is for another machine; it has no function \"unpack\"; the decoder refused the photo; the "
     "picture file could not be written",
     "没有 /libwlt.so；架构不符；缺少 unpack 函数；解码器拒绝该照片；图片文件无法写入",
     "put the decoder for this machine at /libwlt.so; look at it: qlid doctor",
     "将适用于本机的解码器放到 /libwlt.so；检查：qlid doctor", "qlid demo --fault photo-refused"},
    {QL_SAVE_IMAGE_ERROR, kExitNoPhoto, "save-image",
     "an image file could not be saved", "保存图像错误",
     "The card was read; the file was not written.", "卡片已读出，文件未写入。",
     "the folder is missing or not writable; the disk is full", "目录不存在或不可写；磁盘已满",
     "name another file", "换一个文件名", "qlid demo --photo /no-such-folder/photo.bmp"},
    {QL_CANCELLED, kExitCancelled, "cancelled",
     "cancelled", "已取消",
     "The read was stopped before a card was read; the reader is closed.", "读卡在读到卡片前被停止，读卡器已关闭。",
     "Ctrl-C, or a call of APP_ID_CancelRead", "按下 Ctrl-C，或调用了 APP_ID_CancelRead",
     "", "", "timeout --signal=INT 1 qlid demo --fault no-card"},
    {QL_NO_CARD, kExitNoCard, "no-card",
     "the reader reports that no card is present", "未找到卡片",
     "A search found a card, the select that follows did not.", "寻卡成功，但随后的选卡失败。",
     "the card was taken away between search and select", "卡片在寻卡与选卡之间被拿走",
     "put the card flat on the reader and keep it there", "请将卡片平放在读卡器上并保持不动",
     "qlid demo --fault select-no-card"},
    {QL_CARD_TYPE_ERROR, kExitOtherCard, "card-kind",
     "another kind of card", "卡片类型错误",
     "The card is sound, but of a kind that was not asked for.", "卡片正常，但不是所要求的类型。",
     "the card is none of the kinds that were asked for", "卡片不是所要求的类型",
     "leave out --kind to accept all three kinds", "去掉 --kind 以接受全部三种卡片", "qlid demo --fault other-kind"},
    {QL_UNSUPPORTED, kExitOtherCard, "unsupported",
     "not supported by this reader", "二代证设备不支持",
     "The card module says that it does not know the read command.", "安全模块表示不支持该读取命令。",
     "the card module does not know the command", "安全模块不支持该命令",
     "read without fingerprints, or use another reader", "不读指纹，或更换读卡器",
     "qlid demo --fault unsupported-card"},
    {QL_INVALID_ARGUMENT, kExitUsage, "argument",
     "an argument is missing or out of range", "参数错误",
     "Nothing was opened or sent.", "未打开设备，未发送数据。",
     "the time limit is not 1 to 120 s; the device text is not understood", "超时不在 1 到 120 秒之间；无法识别设备名",
     "see qlid read --help", "参见 qlid read --help", "qlid read --device COM1"},
    {QL_OTHER_ERROR, kExitOther, "other",
     "another failure", "其他错误",
     "What has no code of its own.", "没有单独代码的其他情况。",
     "the card module answered with a status of its own, such as IC power-on; the photo has an unusable length",
     "安全模块返回了其他状态（如 IC 上电）；照片长度无效", "try again; keep a record of the session: qlid read --trace",
     "重试；记录会话：qlid read --trace", "qlid demo --fault ic-power-on"},
};
// clang-format on

}  // namespace

std::span<const ResultText> Results() { return kResults; }

const ResultText& ResultOf(int code) {
  for (const ResultText& row : kResults) {
    if (row.code == code) return row;
  }
  return kResults[std::size(kResults) - 1];
}

std::string LibraryMessage(int code) {
  char message[QL_MESSAGE_SIZE] = {};
  TY_IDGetErrMessage(code, message);
  bool known = false;
  for (const ResultText& row : kResults) known = known || row.code == code;
  if (!known) return message;  // The one message that is UTF-8 already.
  char text[3 * QL_MESSAGE_SIZE] = {};
  GBKToUTF8(message, text, sizeof text - 2);
  return text;
}

}  // namespace qlid
