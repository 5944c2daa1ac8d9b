# SPDX-License-Identifier: GPL-3.0-or-later
"""A definition file by itself: its sensors, and one frame at a time."""
from __future__ import annotations

import os
from typing import NamedTuple, Optional, Union

from . import _qorview


class Sensor(NamedTuple):
    """A field of an instrument's frame as its definition describes it."""

    index: int
    type: str
    id: str
    units: str
    fit: str
    data: str
    bytes: int  # of the field; 0 where frames decide


class Definition:
    """A definition file (.cal, .tdf); `wet` converts as for an immersed instrument."""

    def __init__(self, path: Union[str, os.PathLike[str]], wet: bool = False) -> None:
        self.path = os.fspath(path)
        self._core = _qorview.Definition(self.path, wet)

    @property
    def name(self) -> str:
        """The name of the instrument."""
        return self._core.name

    @property
    def frame_size(self) -> int:
        """The bytes of a frame; 0 where its delimiters decide."""
        return self._core.frame_size

    @property
    def sensors(self) -> list[Sensor]:
        """All sensors, in the order of the file."""
        return [Sensor(*fields) for fields in self._core.sensors]

    def convert(self, frame: bytes) -> list[Optional[Union[float, str]]]:
        """The values of one whole frame, one a sensor; None where a sensor has none."""
        return self._core.convert(bytes(frame))

    def __repr__(self) -> str:
        return f"qorview.Definition({self.path!r})"
