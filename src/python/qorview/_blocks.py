# SPDX-License-Identifier: GPL-3.0-or-later
"""Blocks of a log's frames, read when they are asked for and kept for a while: what a process reads once it need not
read again for the next variable."""
from __future__ import annotations

import os
import stat
import threading
from collections import OrderedDict
from typing import Any, Hashable

import numpy

from . import _qorview
from ._log import Derived, Log

BLOCK_BYTES = 16 << 20  # of values in a block, about
KEPT_BYTES = 256 << 20  # of all blocks that a process keeps
KEPT_INDEXES = 64


class _Kept:
    """The latest things, up to so many bytes; one at least. Several threads use it."""

    def __init__(self, most: int) -> None:
        self._most, self._used = most, 0
        self._things: OrderedDict[Hashable, tuple[Any, int]] = OrderedDict()
        self._lock = threading.Lock()

    def get(self, key: Hashable) -> Any:
        with self._lock:
            if key not in self._things:
                return None
            self._things.move_to_end(key)
            return self._things[key][0]

    def put(self, key: Hashable, thing: Any, size: int) -> None:
        with self._lock:
            if key in self._things:
                return
            self._things[key] = (thing, size)
            self._used += size
            while self._used > self._most and len(self._things) > 1:
                self._used -= self._things.popitem(last=False)[1][1]


_indexes, _blocks = _Kept(KEPT_INDEXES), _Kept(KEPT_BYTES)


class BlockSource:
    """An instrument's frames in a log. Pickled it is a path and options; whoever gets it reads for itself."""

    def __init__(self, log: Log, instrument: str, derived: Derived) -> None:
        self.log, self.instrument, self.derived = log, instrument, derived
        self.stamps = [_stamp_of(file) for file in log._call().files]
        self.frame_count = 0
        self.block = max(1, self._frames_of_block())

    def _key(self) -> Hashable:
        return repr(self.log), self.instrument, self.derived, *self.stamps

    def _check(self) -> None:
        """The files are those that they were: before what is kept is used, and after anything is read of them."""
        for stamp in self.stamps:
            if _stamp_of(stamp[0]) != stamp:
                raise _qorview.FileError(f"{os.fsdecode(stamp[0])}: it has changed since it was opened; open it again.")

    def _index(self) -> _qorview.Index:
        """Products follow the cast: their log is one block, which has everything."""
        index = _indexes.get(self._key())
        if index is None:
            index = _qorview.Index(self.log._call(), self.instrument)
            self._check()
            _indexes.put(self._key(), index, 1)
        return index

    def _whole(self) -> tuple[list, dict, dict, dict]:
        table = _blocks.get((self._key(), "whole"))
        if table is None:
            table = self.log.table(self.instrument, self.derived)
            self._check()
            _blocks.put((self._key(), "whole"), table, _size_of(table[2]))
        return table

    def _frames_of_block(self) -> int:
        if self.derived:
            self.frame_count = len(self._whole()[2]["time"])
            return self.frame_count
        index = self._index()
        self.frame_count = index.frames
        if not index.frames:
            return 0
        return BLOCK_BYTES // max(1, _size_of(index.read(0, 1)))

    def count(self) -> int:
        """How many frames there are."""
        return self.frame_count

    def plain(self) -> tuple[list, dict, dict, dict]:
        """As Log.table, but of the arrays those alone that are in memory: times, counts, checks; arrays of one's own."""
        variables, attributes, arrays, widths = self._whole() if self.derived else self._index().plain()
        values = {name + "_status" for name in arrays} & set(arrays)
        values |= {name.removesuffix("_status") for name in values}
        own = {name: numpy.array(array) for name, array in arrays.items() if name not in values}
        return variables, attributes, own, widths

    def frames(self, name: str, low: int, high: int) -> Any:
        """A variable's values in the frames from low to before high: an array of one's own."""
        self._check()
        if self.derived:
            return numpy.array(_array(self._whole()[2][name])[low:high])
        parts = []
        for number in range(low // self.block, (high - 1) // self.block + 1):
            begin = number * self.block
            values = _array(self._read(number)[name])
            parts.append(values[max(low - begin, 0):high - begin])
        return numpy.concatenate(parts)

    def _read(self, number: int) -> dict[str, Any]:
        block = _blocks.get((self._key(), number))
        if block is None:
            block = self._index().read(number * self.block, self.block)
            self._check()
            _blocks.put((self._key(), number), block, _size_of(block))
        return block


def _stamp_of(file: bytes) -> tuple[bytes, int, int]:
    """What tells a file from what it is later; of a pipe, or one that is not there, nothing does."""
    try:
        state = os.stat(file)
    except OSError:
        return file, -1, 0
    return (file, state.st_size, state.st_mtime_ns) if stat.S_ISREG(state.st_mode) else (file, 0, 0)


def _array(values: Any) -> numpy.ndarray:
    return numpy.array(values, dtype=object) if isinstance(values, list) else values


def _size_of(arrays: dict[str, Any]) -> int:
    return sum(64 * len(one) if isinstance(one, list) else one.nbytes for one in arrays.values())
