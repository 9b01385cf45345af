#!/usr/bin/env python3
"""unpack_kernel.py BZIMAGE OUT: takes the ELF kernel out of a compressed one.

An emulated machine needs seconds to unpack its kernel. One that cannot be unpacked here is copied as it is, and
unpacks itself at every start.
"""

import lzma
import shutil
import struct
import sys


def elf_kernel(image: bytes) -> bytes | None:
    """The boot protocol's header: sectors of the set-up code at 0x1f1, place and length of the payload at 0x248."""
    payload = ((image[0x1F1] or 4) + 1) * 512
    offset, length = struct.unpack_from("<II", image, 0x248)
    packed = image[payload + offset : payload + offset + length]
    try:
        kernel = lzma.LZMADecompressor().decompress(packed)
    except lzma.LZMAError:
        return None
    return kernel if kernel.startswith(b"\x7fELF") else None


def main(source: str, target: str) -> None:
    with open(source, "rb") as file:
        kernel = elf_kernel(file.read())
    if kernel is None:
        shutil.copyfile(source, target)
        return
    with open(target, "wb") as file:
        file.write(kernel)


main(*sys.argv[1:])
