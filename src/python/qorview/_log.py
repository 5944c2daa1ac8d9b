# SPDX-License-Identifier: GPL-3.0-or-later
"""A raw log with the instruments that it is read with."""
from __future__ import annotations

import json
import os
from typing import TYPE_CHECKING, Any, Iterable, Optional, Union

import numpy

from . import _qorview

if TYPE_CHECKING:
    import xarray

Path = Union[str, "os.PathLike[str]"]
Names = Union[bool, str, Iterable[str]]
Derived = Union[bool, str]


def open(path: Path, definitions: Union[Path, Iterable[Path]] = (), session: Optional[Path] = None,
         wet: Names = False, utc_offset: Optional[int] = None) -> Log:
    """Opens a raw log (.raw, also compressed) to be read with these instruments.

    `definitions` are definition files (.cal, .tdf) and packages (.sip); those of a `session` (.qor) join them. Where
    nothing is named the log's manifest says which. `wet` names the immersed instruments, or is True for all.
    `utc_offset` are the minutes that the log's times are ahead of UTC, where its header does not say so.
    Lines of a definition that had to be repaired are a warning, everything else that is wrong an Error.
    """
    return Log(path, definitions, session, wet, utc_offset)


def _listed(value: Any) -> list[str]:
    return [os.fspath(value)] if isinstance(value, (str, os.PathLike)) else [os.fspath(one) for one in value]


class Log:
    """What open() gives. It holds paths and no file, so it can be pickled and sent to another process."""

    def __init__(self, path: Path, definitions: Union[Path, Iterable[Path]] = (), session: Optional[Path] = None,
                 wet: Names = False, utc_offset: Optional[int] = None) -> None:
        self.path = os.fspath(path)
        self.definitions = _listed(definitions)
        self.session = None if session is None else os.fspath(session)
        self.wet = wet if isinstance(wet, bool) else _listed(wet)
        self.utc_offset = utc_offset
        self._instruments: list[str] = _qorview.instruments(self._call())

    def _call(self) -> _qorview.Call:
        wet = self.wet
        return _qorview.Call(self.path, self.definitions, self.session, wet is True, [] if isinstance(wet, bool) else wet,
                             self.utc_offset, repr(self))

    def __repr__(self) -> str:
        said = [repr(self.path)]
        said += [f"{name}={value!r}" for name, value in (("definitions", self.definitions), ("session", self.session),
                 ("wet", self.wet), ("utc_offset", self.utc_offset)) if value not in ([], None, False)]
        return f"qorview.open({', '.join(said)})"

    @property
    def instruments(self) -> list[str]:
        """The names of the instruments, in the order in which they were named."""
        return list(self._instruments)

    def table(self, name: str, derived: Derived = False) -> tuple[list, dict, dict, dict]:
        """What a dataset is made of: variables, attributes, arrays by name, and the widths of texts."""
        if derived not in (False, True, "all"):
            raise _qorview.Error(f"derived={derived!r}: give False, True, or \"all\" for the further products.")
        return _qorview.table(self._call(), name, bool(derived), derived == "all")

    def frame_table(self, name: str, derived: Derived = False) -> dict[str, numpy.ndarray]:
        """All frames of an instrument as arrays by name, a row a frame.

        "time" are the frames' times to the millisecond, NaT where none is known; optical series have a column for
        each wavelength, which "wavelength" has. NAME_status says why NAME has no value, 0 where it has one.
        """
        variables, _, arrays, _ = self.table(name, derived)
        for variable, _, kind, attributes in variables:
            if kind == "S1":
                arrays[variable] = numpy.char.decode(_joined(arrays[variable]), "utf-8")
            elif kind == "O":
                arrays[variable] = numpy.array(arrays[variable], dtype=object)
            elif attributes.get("axis") == "T":
                arrays[variable] = _moments(arrays[variable])
        return arrays

    def to_xarray(self, name: str, derived: Derived = False) -> xarray.Dataset:
        """All frames of an instrument as a dataset in memory, the same as that of the log's netCDF file.

        `derived` adds the products that are computed from frames, "all" the further ones of a package.
        """
        from ._xarray import dataset_of
        return dataset_of(*self.table(name, derived))

    def verify(self) -> dict[str, Any]:
        """Whether the log is whole, as `qorview-cli verify --json` says it: faults with their places."""
        return json.loads(_qorview.verdict(self._call()))


def _joined(characters: numpy.ndarray) -> numpy.ndarray:
    """Rows of characters as byte strings."""
    width = characters.shape[1]
    return numpy.ascontiguousarray(characters).view(f"S{width}").reshape(len(characters))


def _moments(seconds: numpy.ndarray) -> numpy.ndarray:
    """Seconds since 1970 as times; one that is not known is NaT."""
    known = numpy.isfinite(seconds)
    moments = numpy.full(seconds.shape, numpy.datetime64("NaT", "ms"))
    moments[known] = numpy.rint(seconds[known] * 1000).astype("int64").view("datetime64[ms]")
    return moments
