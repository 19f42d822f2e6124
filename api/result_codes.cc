// Published codes and their messages.
#include <cstdint>
#include <cstring>
#include <iterator>

#include "quillonid/results.h"
#include "support/log.h"

namespace {

struct Message {
  std::int32_t code;
  char text[QL_MESSAGE_SIZE];  // GBK
};

constexpr Message s_TyIdErrCode[] = {
    {QL_SUCCESS,            "\xB2\xD9\xD7\xF7\xB3\xC9\xB9\xA6"                }, // 操作成功
    {QL_DEVICE_ERROR,       "\xC9\xE8\xB1\xB8\xB4\xED\xCE\xF3"                }, // 设备错误
    {QL_RECEIVE_ERROR,      "\xBD\xD3\xCA\xD5\xB4\xED\xCE\xF3"                }, // 接收错误
    {QL_SEND_ERROR,         "\xB7\xA2\xCB\xCD\xB4\xED\xCE\xF3"                }, // 发送错误
    {QL_CHECK_ERROR,        "\xD0\xA3\xD1\xE9\xB4\xED\xCE\xF3"                }, // 校验错误
    {QL_TIMEOUT,            "\xB3\xAC\xCA\xB1"                                }, // 超时
    {QL_PHOTO_DECODE_ERROR, "\xBD\xE2\xCE\xF6\xCD\xB7\xCF\xF1\xB4\xED\xCE\xF3"}, // 解析头像错误
    {QL_SAVE_IMAGE_ERROR,   "\xB1\xA3\xB4\xE6\xCD\xBC\xCF\xF1\xB4\xED\xCE\xF3"}, // 保存图像错误
    {QL_CANCELLED,          "\xC8\xA1\xCF\xFB"                                }, // 取消
    {QL_CARD_TYPE_ERROR,    "\xBF\xA8\xC6\xAC\xC0\xE0\xD0\xCD\xB4\xED\xCE\xF3"}, // 卡片类型错误
    {QL_NO_CARD,            "\xCE\xB4\xD5\xD2\xB5\xBD\xBF\xA8\xC6\xAC"        }, // 未找到卡片
    {QL_OTHER_ERROR,        "\xC6\xE4\xCB\xFB\xB4\xED\xCE\xF3"                }, // 其他错误
    {QL_UNSUPPORTED,
     "\xB6\xFE\xB4\xFA\xD6\xA4\xC9\xE8\xB1\xB8\xB2\xBB\xD6\xA7\xB3\xD6"       }, // 二代证设备不支持
    {QL_INVALID_ARGUMENT,   "\xB2\xCE\xCA\xFD\xB4\xED\xCE\xF3"                }, // 参数错误
};
static_assert(std::size(s_TyIdErrCode) == 14 && sizeof(Message) == 132);

// On purpose: UTF-8, unlike the messages of the table.
constexpr char kUnknownMessage[] = "未知错误";
static_assert(sizeof kUnknownMessage == 13);

struct Pair {
  std::int32_t internal;
  std::int32_t published;
};

// Internal code, published code. Codes without a pair are published as QL_OTHER_ERROR.
constexpr Pair s_TyIdErrCodeMap[] = {
    {RET_PUB_SUCCESS,              QL_SUCCESS           },
    {RET_PUB_DEVICE_ERROR,         QL_DEVICE_ERROR      },
    {RET_PUB_READ_ERROR,           QL_RECEIVE_ERROR     },
    {RET_PUB_WRITE_ERROR,          QL_SEND_ERROR        },
    {RET_PUB_CHECK_ERROR,          QL_CHECK_ERROR       },
    {RET_PUB_TIMEOUT,              QL_TIMEOUT           },
    {RET_BUSI_ID_PHOTO_DECODE_ERR, QL_PHOTO_DECODE_ERROR},
    {RET_PUB_CANCEL,               QL_CANCELLED         },
    {RET_PUB_INVAL_PARAM,          QL_INVALID_ARGUMENT  },
    {RET_BUSI_ID_SAVE_IMAGE_ERR,   QL_SAVE_IMAGE_ERROR  },
    {RET_BUSI_ID_CARD_TYPE_ERR,    QL_CARD_TYPE_ERROR   },
    {RET_BUSI_ID_NO_CARD,          QL_NO_CARD           },
    {RET_BUSI_ID_OTHER_ERR,        QL_OTHER_ERROR       },
    {RET_BUSI_ID_UNSUPPORT,        QL_UNSUPPORTED       },
};
static_assert(std::size(s_TyIdErrCodeMap) == 14);

int Published(int code) {
  if (code >= 0) return code;  // A count passes unchanged.
  for (const Pair& pair : s_TyIdErrCodeMap) {
    if (pair.internal == code) return pair.published;
  }
  return QL_OTHER_ERROR;
}

const char* MessageOf(int code) {
  for (const Message& message : s_TyIdErrCode) {
    if (message.code == code) return message.text;
  }
  return kUnknownMessage;
}

}  // namespace

void TY_Id_ConvertErr(int nInErrCode, int* pOut) {
  LOG_API("[%s] Start", __func__);
  LOG_API("nInErrCode = %d ", nInErrCode);
  LOG_API("nInErrCode = %d ", nInErrCode);  // On purpose: twice.
  if (pOut != nullptr) *pOut = Published(nInErrCode);
}

char* TY_IDGetErrMessage(int nInErrCode, char* pMsg) {
  LOG_API("[%s] Start ", __func__);
  LOG_API("nInErrCode = %d ", nInErrCode);
  if (pMsg == nullptr) return nullptr;
  // The text and its zero only: the buffer may be shorter than a field of the table.
  const char* text = MessageOf(nInErrCode);
  std::memcpy(pMsg, text, std::strlen(text) + 1);
  return pMsg;
}
