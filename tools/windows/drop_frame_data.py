#!/usr/bin/env python3
"""Removes the frame data from a PDB, so that stack walks follow the frame pointers.

    drop_frame_data.py PROGRAM.pdb

The data says for each address how to find the caller. Wine's DbgHelp uses the first record
that contains an address instead of the last, and subtracts in the wrong order, so its walks
never leave the first frame. All our code keeps frame pointers and does not need the data.
"""
import struct
import sys
from pathlib import Path

SUPERBLOCK = struct.Struct("<32s6I")
DEBUG_STREAM = 3  # of the file's streams
HEADER = struct.Struct("<iIIHHHHHHiiiiiIiiHHI")  # of that stream
NEW_FRAME_DATA = 9  # of the streams that it lists
NONE = 0xFFFF


class StreamFile:
    """A file of streams; each stream's blocks may be anywhere in the file."""

    def __init__(self, data):
        self.data = data
        magic, self.block, _, _, size, _, directory_map = SUPERBLOCK.unpack_from(data)
        if not magic.startswith(b"Microsoft C/C++ MSF 7.00"):
            sys.exit("not a PDB")
        places = self._words(directory_map * self.block, self._blocks(size))
        directory = b"".join(data[at * self.block:(at + 1) * self.block] for at in places)
        words = struct.unpack_from(f"<{size // 4}I", directory)
        self.places, first = [], 1 + words[0]
        for stream_size in words[1:1 + words[0]]:
            count = self._blocks(0 if stream_size == 0xFFFFFFFF else stream_size)
            self.places.append(words[first:first + count])
            first += count

    def _blocks(self, size):
        return -(-size // self.block)

    def _words(self, at, count):
        return struct.unpack_from(f"<{count}I", self.data, at)

    def place(self, stream, offset):
        """The file offset of a byte of a stream."""
        return self.places[stream][offset // self.block] * self.block + offset % self.block


def main():
    path = Path(sys.argv[1])
    file = StreamFile(bytearray(path.read_bytes()))
    header = HEADER.unpack_from(file.data, file.place(DEBUG_STREAM, 0))
    parts, (list_size, last_part) = header[9:14], header[15:17]
    if list_size < 2 * (NEW_FRAME_DATA + 1):
        return
    offset = HEADER.size + sum(parts) + last_part + 2 * NEW_FRAME_DATA
    for index, byte in enumerate(struct.pack("<H", NONE)):
        file.data[file.place(DEBUG_STREAM, offset + index)] = byte
    path.write_bytes(file.data)


if __name__ == "__main__":
    main()
