# SPDX-License-Identifier: GPL-3.0-or-later
"""Blocks of a log's frames, read when they are asked for and kept for a while: what a process reads once it need not
read again for the next variable."""
from __future__ import annotations

import os
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
        state = os.stat(log.path)
        self.stamp = (state.st_size, state.st_mtime_ns)
        self.frame_count = 0
        self.block = max(1, self._frames_of_block())

    def _key(self) -> Hashable:
        return repr(self.log), self.instrument, self.derived, self.stamp

    def _index(self) -> _qorview.Index:
        """Products follow the cast: their log is one block, which has everything."""
        index = _indexes.get(self._key())
        if index is None:
            index = _qorview.Index(self.log._call(), self.instrument)
            _indexes.put(self._key(), index, 1)
        return index

    def _whole(self) -> tuple[list, dict, dict, dict]:
        table = _blocks.get((self._key(), "whole"))
        if table is None:
            table = self.log.table(self.instrument, self.derived)
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
        """As Log.table, but of the arrays those alone that are in memory: times, counts, checks."""
        if not self.derived:
            return self._index().plain()
        variables, attributes, arrays, widths = self._whole()
        values = {name + "_status" for name in arrays} & set(arrays)
        values |= {name.removesuffix("_status") for name in values}
        return variables, attributes, {name: arrays[name] for name in arrays if name not in values}, widths

    def frames(self, name: str, low: int, high: int) -> Any:
        """A variable's values in the frames from low to before high: an array of one's own."""
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
            _blocks.put((self._key(), number), block, _size_of(block))
        return block


def _array(values: Any) -> numpy.ndarray:
    return numpy.array(values, dtype=object) if isinstance(values, list) else values


def _size_of(arrays: dict[str, Any]) -> int:
    return sum(64 * len(one) if isinstance(one, list) else one.nbytes for one in arrays.values())
