#!/usr/bin/env python3
"""unpack_kernel.py BZIMAGE OUT: takes the ELF kernel out of a compressed one.

An emulated machine needs seconds to unpack its kernel. One that cannot be unpacked here is copied as it is, and
unpacks itself at every start.
"""

import lzma
import pathlib
import struct
import sys

source, target = map(pathlib.Path, sys.argv[1:])
image = source.read_bytes()
# The boot protocol's header: sectors of the set-up code at 0x1f1, place and length of the payload at 0x248.
offset, length = struct.unpack_from("<II", image, 0x248)
offset += ((image[0x1F1] or 4) + 1) * 512
try:
    kernel = lzma.LZMADecompressor().decompress(image[offset : offset + length])
except lzma.LZMAError:
    kernel = image
target.write_bytes(kernel if kernel.startswith(b"\x7fELF") else image)
