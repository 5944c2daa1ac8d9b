// SPDX-License-Identifier: GPL-3.0-or-later
//
// The module qorview._qorview: what stands in LogFrames, for Python. Arrays look into the columns,
// which live as long as the last of them. The interpreter's lock is given back while a log is
// played or read.
#include "python/LogFrames.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FieldText.h"
#include "products/DerivedRows.h"
#include "session/LogManifest.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <stdexcept>

namespace py = pybind11;

namespace qor {

namespace {

struct CCallError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct CFileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Check(const ReadFault& fault) {
    if (fault && fault.ofFile)
        throw CFileError(Utf8Of(fault.text));
    if (fault)
        throw CCallError(Utf8Of(fault.text));
}

/// Texts of definitions may be Latin-1.
py::str Str(const std::string& text) {
    return IsUtf8(text) ? text : Utf8Of(text);
}

using SharedColumns = std::shared_ptr<const CFrameColumns>;

/// An array that looks into the columns and keeps them.
template <class T>
py::array ArrayOf(const SharedColumns& columns, const std::vector<T>& values,
                  std::vector<py::ssize_t> shape) {
    const py::capsule owner(new SharedColumns(columns),
                            [](void* held) { delete static_cast<SharedColumns*>(held); });
    return py::array_t<T>(std::move(shape), values.data(), owner);
}

py::object TextsOf(const SharedColumns& columns, const FrameVariable& variable,
                   const CFrameColumns::Column& column) {
    if (variable.width > 0) {
        const auto width = static_cast<py::ssize_t>(variable.width);
        const py::capsule owner(new SharedColumns(columns),
                                [](void* held) { delete static_cast<SharedColumns*>(held); });
        return py::array(py::dtype("S1"),
                         {static_cast<py::ssize_t>(column.bytes.size()) / width, width},
                         column.bytes.data(), owner);
    }
    py::list texts;
    for (const std::string& text : column.texts)
        texts.append(Str(text));
    return texts;
}

/// Arrays by the names of their variables.
void AddValues(const SharedColumns& columns, py::dict& values) {
    for (std::size_t i = 0; i < columns->Columns.size(); ++i) {
        const FrameVariable& variable = columns->Layout().variables[i];
        const CFrameColumns::Column& column = columns->Columns[i];
        const auto channels = static_cast<py::ssize_t>(variable.indexes.size());
        std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(column.statuses.size()) / channels};
        if (variable.grid >= 0)
            shape.push_back(channels);
        values[Str(variable.statusName)] = ArrayOf(columns, column.statuses, shape);
        values[Str(variable.name)] = variable.origin == FrameOrigin::Text
                                         ? TextsOf(columns, variable, column)
                                         : ArrayOf(columns, column.numbers, shape);
    }
}

void AddPlain(const SharedColumns& columns, py::dict& values) {
    const FrameLayout& layout = columns->Layout();
    const std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(columns->Frames())};
    values[Str(layout.time.name)] = ArrayOf(columns, columns->Seconds, shape);
    values[Str(layout.frame.name)] = ArrayOf(columns, columns->Counts, shape);
    for (std::size_t i = 0; i < layout.flags.size(); ++i)
        values[Str(layout.flags[i].name)] = ArrayOf(columns, columns->Flags[i], shape);
    for (const WavelengthGrid& grid : layout.grids)
        values[Str(grid.name)] =
            ArrayOf(columns, grid.wavelengths, {static_cast<py::ssize_t>(grid.wavelengths.size())});
}

py::dict DictOf(const FrameAttributes& attributes) {
    py::dict dict;
    for (const FrameAttribute& attribute : attributes)
        if (const auto* text = std::get_if<std::string>(&attribute.value)) {
            dict[Str(attribute.name)] = Str(*text);
        } else {
            const auto& numbers = std::get<std::vector<signed char>>(attribute.value);
            dict[Str(attribute.name)] =
                py::array_t<signed char>(static_cast<py::ssize_t>(numbers.size()), numbers.data());
        }
    return dict;
}

/// (name, dimensions, kind, attributes) of each variable; a kind is a dtype's text.
py::list VariablesOf(const FrameLayout& layout) {
    py::list variables;
    const auto add = [&](const std::string& name, const py::tuple& over, const char* kind,
                         const FrameAttributes& attributes) {
        variables.append(py::make_tuple(Str(name), over, kind, DictOf(attributes)));
    };
    const py::tuple time = py::make_tuple(layout.time.name);
    add(layout.time.name, time, "f8", layout.time.attributes);
    add(layout.frame.name, time, "i4", layout.frame.attributes);
    for (const FramePlain& flag : layout.flags)
        add(flag.name, time, "i1", flag.attributes);
    for (const WavelengthGrid& grid : layout.grids)
        add(grid.name, py::make_tuple(grid.name), "f8", layout.gridAttributes);
    for (const FrameVariable& variable : layout.variables) {
        const bool text = variable.origin == FrameOrigin::Text;
        const py::tuple over =
            variable.grid < 0
                ? time
                : py::make_tuple(layout.time.name,
                                 layout.grids[static_cast<std::size_t>(variable.grid)].name);
        const bool wide = variable.width > 0;
        add(variable.name, wide ? py::make_tuple(layout.time.name, variable.widthDimension) : over,
            !text  ? "f8"
            : wide ? "S1"
                   : "O",
            variable.attributes);
        add(variable.statusName, over, "i1", variable.statusAttributes);
    }
    return variables;
}

/// (variables, attributes, arrays by name, sizes of dimensions that texts have).
py::tuple TableOf(const SharedColumns& columns, bool plain, bool whole) {
    py::dict values, widths;
    if (plain)
        AddPlain(columns, values);
    if (whole)
        AddValues(columns, values);
    for (const FrameVariable& variable : columns->Layout().variables)
        if (variable.width > 0)
            widths[Str(variable.widthDimension)] = variable.width;
    return py::make_tuple(VariablesOf(columns->Layout()), DictOf(columns->Layout().global), values,
                          widths);
}

/// What the package's open() was called with.
LogCall CallOf(const std::string& path, const std::vector<std::string>& files,
               const std::optional<std::string>& session, bool allWet,
               const std::vector<std::string>& wet, std::optional<int> utcOffset,
               const std::string& text) {
    LogCall call{path, {}, utcOffset, text};
    call.instruments.definitions = files;
    call.instruments.allWet = allWet;
    call.instruments.wet = wet;
    if (session)
        Check(TakeSession(*session, call));
    const bool said = !call.instruments.Empty();
    TakeManifest(call);
    call.files = FilesOf(call.instruments, call.instruments.session, session.value_or(""), {path});
    if (!said)
        call.files.push_back(ManifestPathOf(path));
    return call;
}

std::vector<std::string> InstrumentsOf(const LogCall& call) {
    CLogReading log;
    {
        const py::gil_scoped_release unlocked;
        if (const ReadFault fault = log.Open(call)) {
            const py::gil_scoped_acquire locked;
            Check(fault);
        }
    }
    for (const std::string& warning : log.Warnings())
        if (PyErr_WarnEx(PyExc_UserWarning, Utf8Of(warning).c_str(), 3) != 0)
            throw py::error_already_set();
    return log.Names();
}

py::tuple TableOfLog(LogCall call, const std::string& instrument, bool derived, bool all) {
    std::unique_ptr<CFrameColumns> columns;
    ReadFault fault;
    {
        const py::gil_scoped_release unlocked;
        call.instruments.derived = all ? DerivedChoice::All : DerivedChoice::Usual;
        fault = ReadColumns(call, instrument, derived, columns);
    }
    Check(fault);
    return TableOf(SharedColumns(std::move(columns)), true, true);
}

std::string VerdictOfLog(const LogCall& call) {
    std::string json;
    ReadFault fault;
    {
        const py::gil_scoped_release unlocked;
        fault = VerdictOf(call, json);
    }
    Check(fault);
    return json;
}

/// The plain columns belong to the index, which arrays keep.
struct SharedIndex {
    std::shared_ptr<CFrameIndex> index = std::make_shared<CFrameIndex>();

    SharedIndex(const LogCall& call, const std::string& instrument) {
        ReadFault fault;
        {
            const py::gil_scoped_release unlocked;
            fault = index->Make(call, instrument);
        }
        Check(fault);
    }
    py::tuple Plain() const { return TableOf(SharedColumns(index, &index->Plain()), true, false); }
    py::dict Read(std::size_t first, std::size_t count) const {
        std::unique_ptr<CFrameColumns> columns;
        ReadFault fault;
        {
            const py::gil_scoped_release unlocked;
            fault = index->Read(first, count, columns);
        }
        Check(fault);
        py::dict values;
        AddValues(SharedColumns(std::move(columns)), values);
        return values;
    }
};

/// A definition by itself.
class CPythonDefinition {
  public:
    CPythonDefinition(const std::string& path, bool wet) : Wet(wet) {
        const DefinitionStatus status = Definition.Load(path);
        if (status != DefinitionStatus::Success)
            throw CFileError(
                Utf8Of(path + ": could not be loaded. " + OneLine(Definition.ParseLog())));
    }
    py::str Name() const { return Str(Definition.Name()); }
    std::int32_t FrameSize() const {
        return Definition.Type() == FrameType::Fixed ? Definition.FrameSize() : 0;
    }
    /// (index, type, id, units, fit, data type, bytes) of each; 0 bytes: as many as there are.
    py::list Sensors() const {
        py::list sensors;
        for (const CSensor& sensor : Definition.Sensors())
            sensors.append(py::make_tuple(sensor.Index, Str(sensor.Type), Str(sensor.Id),
                                          Str(sensor.Units), KeywordOf(sensor.Fit),
                                          KeywordOf(sensor.Data), sensor.FieldLength));
        return sensors;
    }
    py::list Convert(const py::bytes& bytes) const;

  private:
    CInstrument Definition;
    bool Wet;
};

py::list CPythonDefinition::Convert(const py::bytes& bytes) const {
    const auto text = static_cast<std::string_view>(bytes);
    if (Definition.Type() == FrameType::Fixed &&
        text.size() != static_cast<std::size_t>(Definition.FrameSize()))
        throw CCallError(Utf8Of(Definition.FilePath() + ": its frames have " +
                                std::to_string(Definition.FrameSize()) + " bytes, not " +
                                std::to_string(text.size()) + "; give one frame as a whole."));
    CLiveInstrument live(Definition);
    live.Immersed = Wet;
    CFrameData frame;
    frame.Bytes.assign(text.begin(), text.end());
    live.Take(frame);
    py::list values;
    std::string scratch;
    for (const CSensor& sensor : Definition.Sensors()) {
        if (KindOfValue(sensor) == ValueKind::None) {
            values.append(py::none());
            continue;
        }
        const ShownValue value = ValueOf(live, sensor, ValueView::Calibrated, scratch);
        if (value.status != ConversionStatus::Good)
            values.append(py::none());
        else if (value.isText)
            values.append(Str(scratch));
        else
            values.append(value.number);
    }
    return values;
}

} // namespace

} // namespace qor

PYBIND11_MODULE(_qorview, module) {
    using namespace qor;
    module.doc() = "The engine of QorView; use the package qorview, which is made of it.";
    module.attr("__version__") = QORVIEW_VERSION;
    const auto error = py::register_exception<CCallError>(module, "Error", PyExc_ValueError);
    py::register_exception<CFileError>(module, "FileError",
                                       py::make_tuple(error, py::handle(PyExc_OSError)));
    py::class_<LogCall>(module, "Call")
        .def(py::init(&CallOf), py::arg("path"), py::arg("files"), py::arg("session"),
             py::arg("all_wet"), py::arg("wet"), py::arg("utc_offset"), py::arg("text"))
        .def_property_readonly("files", [](const LogCall& call) {
            return std::vector<py::bytes>(call.files.begin(), call.files.end());
        });
    module.def("instruments", &InstrumentsOf, py::arg("call"));
    module.def("table", &TableOfLog, py::arg("call"), py::arg("instrument"), py::arg("derived"),
               py::arg("further"));
    module.def("verdict", &VerdictOfLog, py::arg("call"));
    py::class_<SharedIndex>(module, "Index")
        .def(py::init<const LogCall&, const std::string&>(), py::arg("call"), py::arg("instrument"))
        .def_property_readonly("frames",
                               [](const SharedIndex& index) { return index.index->Frames(); })
        .def("plain", &SharedIndex::Plain)
        .def("read", &SharedIndex::Read, py::arg("first"), py::arg("count"));
    py::class_<CPythonDefinition>(module, "Definition")
        .def(py::init<const std::string&, bool>(), py::arg("path"), py::arg("wet"))
        .def_property_readonly("name", &CPythonDefinition::Name)
        .def_property_readonly("frame_size", &CPythonDefinition::FrameSize)
        .def_property_readonly("sensors", &CPythonDefinition::Sensors)
        .def("convert", &CPythonDefinition::Convert, py::arg("frame"));
}
