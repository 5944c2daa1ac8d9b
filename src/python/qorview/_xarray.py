# SPDX-License-Identifier: GPL-3.0-or-later
"""Frames as xarray datasets: all in memory, or by blocks of frames that are read when they are needed."""
from __future__ import annotations

from typing import Any, Iterable, Mapping, Optional, Union

import numpy
import xarray
from xarray.backends import AbstractDataStore, BackendArray, BackendEntrypoint, StoreBackendEntrypoint
from xarray.core import indexing

from . import _qorview
from ._blocks import BlockSource
from ._log import Derived, Log, Names, Path

Kind = Mapping[str, Any]


class _Store(AbstractDataStore):
    """Variables as they stand in a file, which xarray decodes (times, texts) as it decodes those of one."""

    def __init__(self, variables: Mapping[str, xarray.Variable], attributes: Mapping[str, Any]) -> None:
        self._variables, self._attributes = variables, attributes

    def get_variables(self) -> Mapping[str, xarray.Variable]:
        return self._variables

    def get_attrs(self) -> Mapping[str, Any]:
        return self._attributes

    def get_encoding(self) -> Mapping[str, Any]:
        return {"unlimited_dims": {"time"}}

    def close(self) -> None:
        """No file stays open."""


class _Column(BackendArray):
    """A variable over the frames of a log, none of which is in memory."""

    def __init__(self, source: BlockSource, name: str, shape: tuple[int, ...], kind: str) -> None:
        self.source, self.name, self.shape = source, name, shape
        self.dtype = xarray.coding.strings.create_vlen_dtype(str) if kind == "O" else numpy.dtype(kind)

    def __getitem__(self, key: indexing.ExplicitIndexer) -> Any:
        return indexing.explicit_indexing_adapter(key, self.shape, indexing.IndexingSupport.BASIC, self._part)

    def _part(self, key: tuple[Union[int, slice], ...]) -> Any:
        frames = key[0]
        if not isinstance(frames, slice):
            one = int(frames) % self.shape[0]
            return self.source.frames(self.name, one, one + 1)[(0, *key[1:])]
        wanted = range(*frames.indices(self.shape[0]))
        if not wanted:
            return numpy.empty(self.shape, self.dtype)[(slice(0, 0), *key[1:])]
        low, high = min(wanted[0], wanted[-1]), max(wanted[0], wanted[-1]) + 1
        part = self.source.frames(self.name, low, high)
        return part[(slice(None, None, frames.step), *key[1:])]


def _variable(over: tuple[str, ...], kind: str, attributes: Kind, data: Any, block: int = 0) -> xarray.Variable:
    if kind == "O" and isinstance(data, list):
        data = numpy.array(data, dtype=xarray.coding.strings.create_vlen_dtype(str))
    said = dict(attributes)
    if kind == "f8" and over != ("wavelength",) and "radiation_wavelength" != said.get("standard_name"):
        said["_FillValue"] = numpy.nan
    encoding = {"preferred_chunks": {over[0]: block}} if block else {}
    return xarray.Variable(over, data, said, encoding)


def dataset_of(variables: list, attributes: dict, arrays: dict, widths: dict) -> xarray.Dataset:
    """A dataset of what Log.table gives."""
    made = {name: _variable(over, kind, said, arrays[name]) for name, over, kind, said in variables}
    return StoreBackendEntrypoint().open_dataset(_Store(made, attributes))


def _lazy_store(log: Log, instrument: str, derived: Derived) -> _Store:
    source = BlockSource(log, instrument, derived)
    variables, attributes, plain, widths = source.plain()
    made = {}
    for name, over, kind, said in variables:
        data = plain.get(name)
        if data is None:
            shape = (source.count(), *(widths[one] if one in widths else len(plain[one]) for one in over[1:]))
            data = indexing.LazilyIndexedArray(_Column(source, name, shape, kind))
        made[name] = _variable(over, kind, said, data, source.block if over[0] == "time" else 0)
    return _Store(made, attributes)


class QorViewBackend(BackendEntrypoint):
    """xarray.open_dataset(log, engine="qorview", definitions=[...], instrument=NAME)"""

    description = "Raw logs of oceanographic instruments"
    open_dataset_parameters = ("filename_or_obj", "drop_variables", "mask_and_scale", "decode_times",
                               "concat_characters", "decode_coords", "use_cftime", "decode_timedelta", "instrument",
                               "definitions", "session", "wet", "utc_offset", "derived")

    def open_dataset(self, filename_or_obj: Path, *, drop_variables: Union[str, Iterable[str], None] = None,  # type: ignore[override]
                     mask_and_scale: bool = True, decode_times: bool = True, concat_characters: bool = True,
                     decode_coords: bool = True, use_cftime: Optional[bool] = None,
                     decode_timedelta: Optional[bool] = None, instrument: Optional[str] = None,
                     definitions: Union[Path, Iterable[Path]] = (), session: Optional[Path] = None,
                     wet: Names = False, utc_offset: Optional[int] = None, derived: Derived = False) -> xarray.Dataset:
        """The frames of one instrument of a log; see qorview.open for what the options mean."""
        log = Log(filename_or_obj, definitions, session, wet, utc_offset)
        if instrument is None and len(log.instruments) > 1:
            raise _qorview.Error(f"{log.path}: it is read with several instruments; say which with "
                                 f"instrument=, one of {', '.join(log.instruments)}.")
        store = _lazy_store(log, instrument or log.instruments[0], derived)
        return StoreBackendEntrypoint().open_dataset(
            store, mask_and_scale=mask_and_scale, decode_times=decode_times, concat_characters=concat_characters,
            decode_coords=decode_coords, drop_variables=drop_variables, use_cftime=use_cftime,
            decode_timedelta=decode_timedelta)
