#!/usr/bin/env python3
"""Reads one card of any kind through ctypes and prints two of its fields.

    ./read_card.py HID
    ./read_card.py /dev/ttyUSB0
"""
import ctypes
import json
import sys

if len(sys.argv) != 2:
    sys.exit("usage: read_card.py DEVICE")

quillonid = ctypes.CDLL("libquillonid.so.1")
read = quillonid.APP_ID_ReadCollectIDCardInfo
read.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_long, ctypes.c_long, ctypes.c_int,
                 ctypes.c_char_p, ctypes.c_char_p]
read.restype = ctypes.c_int

text = ctypes.create_string_buffer(8192)
result = read(sys.argv[1].encode(), b"", 115200, 10, 0, None, text)
if result != 0:
    # Messages are GBK, code page 936; the one for an unknown code is UTF-8.
    message = ctypes.create_string_buffer(128)
    quillonid.APP_ID_IDGetErrCodeMessage(result, message)
    sys.exit(f"no card read: {result} {message.value.decode('gbk', 'replace')}")

# A long text may be cut inside a character at the end of its field.
card = json.loads(text.value.decode("utf-8", "replace"))
print(card["ChinaName"].rstrip(), card["IDNumber"])  # cards pad their texts with blanks
