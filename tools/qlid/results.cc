#include "tools/qlid/results.h"

#include "quillonid/carddata.h"
#include "quillonid/results.h"

namespace qlid {
namespace {

// clang-format off
constexpr ResultText kResults[] = {
    {QL_SUCCESS, kExitDone, "done", "done", "操作成功", "", "", "", "", nullptr},
    {QL_DEVICE_ERROR, kExitNoReader, "device", "the reader cannot be opened", "无法打开读卡器",
     "no reader is plugged in; the device name is wrong; no permission; another program uses it",
     "未插入读卡器；设备名错误；没有权限；被其他程序占用", "see which readers are there: qlid devices",
     "查看已连接的读卡器：qlid devices", nullptr},
    {QL_RECEIVE_ERROR, kExitProtocol, "receive", "the reader's answer was missing or malformed",
     "读卡器的应答缺失或格式错误", "the line is disturbed; the device is no identity-card reader; the card was moved",
     "线路受干扰；设备不是身份证读卡器；卡片被移动", "check cable and speed, keep the card still, try again",
     "检查线缆和波特率，保持卡片不动后重试", nullptr},
    {QL_SEND_ERROR, kExitProtocol, "send", "sending to the reader failed", "向读卡器发送失败",
     "the reader was unplugged; the line is blocked", "读卡器被拔出；线路阻塞",
     "plug the reader in again and try again", "重新插入读卡器后重试", nullptr},
    {QL_CHECK_ERROR, kExitProtocol, "check", "a reader packet failed its check", "数据包校验错误",
     "the line is disturbed", "线路受干扰", "check cable and speed: --baud", "检查线缆和波特率：--baud", nullptr},
    {QL_TIMEOUT, kExitNoCard, "timeout", "no card in time", "超时：未读到卡片",
     "no card on the reader; the reader is silent: wrong speed, no power; every answer was malformed",
     "读卡器上没有卡片；读卡器无应答：波特率错误或未上电；应答全部错误",
     "put the card flat on the reader and keep it there; more time: --timeout 30",
     "请将卡片平放在读卡器上并保持不动；延长时间：--timeout 30", "no-card"},
    {QL_PHOTO_DECODE_ERROR, kExitNoPhoto, "photo", "the text was read, the photo was not decoded",
     "文字已读出，照片未解码",
     "no file /libwlt.so; it is for another machine; it has no function \"unpack\"; the decoder refused the photo; the "
     "picture file could not be written",
     "没有 /libwlt.so；架构不符；缺少 unpack 函数；解码器拒绝该照片；图片文件无法写入",
     "put the decoder for this machine at /libwlt.so", "将适用于本机的解码器放到 /libwlt.so", "photo-refused"},
    {QL_SAVE_IMAGE_ERROR, kExitNoPhoto, "save-image", "an image file could not be saved", "保存图像错误",
     "the folder is missing or not writable; the disk is full", "目录不存在或不可写；磁盘已满",
     "name another file", "换一个文件名", nullptr},
    {QL_CANCELLED, kExitCancelled, "cancelled", "cancelled", "已取消", "Ctrl-C, or a call of APP_ID_CancelRead",
     "按下 Ctrl-C，或调用了 APP_ID_CancelRead", "", "", nullptr},
    {QL_NO_CARD, kExitNoCard, "no-card", "the reader reports that no card is present", "未找到卡片",
     "the card was taken away between search and select", "卡片在寻卡与选卡之间被拿走",
     "put the card flat on the reader and keep it there", "请将卡片平放在读卡器上并保持不动", "select-no-card"},
    {QL_CARD_TYPE_ERROR, kExitOtherCard, "card-kind", "another kind of card", "卡片类型错误",
     "the card is none of the kinds that were asked for", "卡片不是所要求的类型",
     "leave out --kind to accept all three kinds", "去掉 --kind 以接受全部三种卡片", "other-kind"},
    {QL_UNSUPPORTED, kExitOtherCard, "unsupported", "not supported by this reader", "二代证设备不支持",
     "the card module does not know the command", "安全模块不支持该命令",
     "read without fingerprints, or use another reader", "不读指纹，或更换读卡器", nullptr},
    {QL_INVALID_ARGUMENT, kExitUsage, "argument", "an argument is missing or out of range", "参数错误",
     "the time limit is not 1 to 120 s; the device text is not understood", "超时不在 1 到 120 秒之间；无法识别设备名",
     "see qlid read --help", "参见 qlid read --help", nullptr},
    {QL_OTHER_ERROR, kExitOther, "other", "another failure", "其他错误",
     "the card module answered with a status of its own, such as IC power-on; the photo has an unusable length",
     "安全模块返回了其他状态（如 IC 上电）；照片长度无效", "try again; keep a record of the session: qlid read --trace",
     "重试；记录会话：qlid read --trace", "ic-power-on"},
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
