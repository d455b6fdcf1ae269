// The extension `qvx._qvx`: the parser object and the result model as Python
// objects. The package `qvx` around it adds the exception of a refused input,
// so that raising stays plain Python.
#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/qvx.h"

namespace py = pybind11;
using nlohmann::json;

namespace {

// Text as the JSON form prints it: bytes that are not valid UTF-8 dropped.
// The library's printer does the dropping, so both agree on every byte.
py::str textOf(const std::string& bytes) {
    PyObject* text =
        PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "strict");
    if (text != nullptr) return py::reinterpret_steal<py::str>(text);
    PyErr_Clear();
    const json clean = json::parse(json(bytes).dump(-1, ' ', false, json::error_handler_t::ignore));
    return py::str(clean.get_ref<const std::string&>());
}

py::object toPython(const json& value) {
    switch (value.type()) {
        case json::value_t::boolean:
            return py::bool_(value.get<bool>());
        case json::value_t::number_integer:
            return py::int_(value.get<std::int64_t>());
        case json::value_t::number_unsigned:
            return py::int_(value.get<std::uint64_t>());
        case json::value_t::number_float:
            return py::float_(value.get<double>());
        case json::value_t::string:
            return textOf(value.get_ref<const std::string&>());
        case json::value_t::array: {
            py::list list;
            for (const auto& element : value) list.append(toPython(element));
            return std::move(list);
        }
        case json::value_t::object: {
            py::dict dict;
            for (const auto& [key, element] : value.items()) dict[textOf(key)] = toPython(element);
            return std::move(dict);
        }
        case json::value_t::null:
        case json::value_t::binary:
        case json::value_t::discarded:
            break;
    }
    return py::none();
}

json fromPython(py::handle value) {
    if (value.is_none()) return nullptr;
    // bool before int: True is an int in Python.
    if (py::isinstance<py::bool_>(value)) return value.cast<bool>();
    if (py::isinstance<py::int_>(value)) {
        int overflow = 0;
        const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
        if (overflow == 0) return static_cast<std::int64_t>(number);
        const unsigned long long positive = PyLong_AsUnsignedLongLong(value.ptr());
        if (PyErr_Occurred() != nullptr) {
            PyErr_Clear();
            throw py::value_error("options: integer out of the 64-bit range");
        }
        return static_cast<std::uint64_t>(positive);
    }
    if (py::isinstance<py::float_>(value)) return value.cast<double>();
    if (py::isinstance<py::str>(value)) return value.cast<std::string>();
    if (py::isinstance<py::dict>(value)) {
        json object = json::object();
        for (const auto& [key, element] : value.cast<py::dict>()) {
            if (!py::isinstance<py::str>(key)) throw py::type_error("options: keys must be str");
            object[key.cast<std::string>()] = fromPython(element);
        }
        return object;
    }
    if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) {
        json array = json::array();
        for (const auto& element : value) array.push_back(fromPython(element));
        return array;
    }
    throw py::type_error("options: " + std::string(py::str(py::type::of(value))) +
                         " is not a JSON value");
}

// The bytes of a str (UTF-8) or of any contiguous bytes-like object, unchanged.
std::string bytesOf(py::handle data) {
    if (py::isinstance<py::str>(data)) {
        Py_ssize_t size = 0;
        const char* utf8 = PyUnicode_AsUTF8AndSize(data.ptr(), &size);
        if (utf8 == nullptr) throw py::error_already_set();  // lone surrogates
        return std::string(utf8, static_cast<std::size_t>(size));
    }
    if (PyObject_CheckBuffer(data.ptr()) == 0) {
        throw py::type_error("data must be str or bytes, not " +
                             std::string(py::str(py::type::of(data))));
    }
    Py_buffer view;
    if (PyObject_GetBuffer(data.ptr(), &view, PyBUF_SIMPLE) != 0) throw py::error_already_set();
    std::string bytes(static_cast<const char*>(view.buf), static_cast<std::size_t>(view.len));
    PyBuffer_Release(&view);
    return bytes;
}

// One parser object of the library. A parse either gives the frozen data or
// the refusing issue; the package turns the latter into `qvx.ParseError`.
class PyParser {
  public:
    explicit PyParser(const std::string& name) {
        const auto format = parser::dataFormatFromName(name);
        if (!format) throw py::value_error("unknown format '" + name + "'");
        auto created = qvx::Parser::create(nullptr, *format);
        if (!created) throw py::value_error(created.error());
        parser_ = std::move(created).value();
    }

    void setOptions(py::handle options) {
        const std::string text = py::isinstance<py::str>(options) ? options.cast<std::string>()
                                                                  : fromPython(options).dump();
        auto set = parser_->setOptions(text);
        if (!set) throw py::value_error(set.error());
    }

    py::object options() const { return toPython(parser_->optionsToJSON()); }
    const std::string& format() const { return parser::dataFormatName(parser_->format()); }

    py::object parse(py::handle data) {
        auto outcome = parser_->parse(bytesOf(data));
        if (outcome.ok()) return py::cast(outcome.value());
        return py::cast(outcome.error());
    }

  private:
    std::shared_ptr<qvx::Parser> parser_;
};

py::list fieldList(const parser::ParsedData& data, bool onlyWithIssues) {
    py::list list;
    for (const auto& field : data.fields()) {
        if (!onlyWithIssues || !field->issues.empty()) list.append(py::cast(field));
    }
    return list;
}

}  // namespace

PYBIND11_MODULE(_qvx, m) {
    m.doc() = "Parser objects and results of the qvx-parser library.";

    m.def(
        "formats",
        [] {
            py::list names;
            for (const auto& [format, name] : parser::dataFormatTable()) {
                if (qvx::Parser::isFormatAvailable(format)) names.append(name);
            }
            return names;
        },
        "The names of the formats this build parses, in the library's order.");

    py::class_<parser::ParserIssue, std::shared_ptr<parser::ParserIssue>>(m, "Issue")
        .def_property_readonly("message",
                               [](const parser::ParserIssue& i) { return textOf(i.message); })
        .def_property_readonly(
            "code", [](const parser::ParserIssue& i) { return static_cast<int>(i.code); })
        .def_property_readonly("additional_info", [](const parser::ParserIssue& i) {
            py::dict info;
            for (const auto& [key, value] : i.additionalInfo) {
                info[py::str(parser::issueInfoKeyName(key))] = textOf(value);
            }
            return info;
        });

    py::class_<parser::ParsedField, std::shared_ptr<parser::ParsedField>>(m, "ParsedField")
        .def_property_readonly("name", [](const parser::ParsedField& f) { return textOf(f.name); })
        .def_property_readonly("raw_string",
                               [](const parser::ParsedField& f) { return textOf(f.rawString); })
        .def_property_readonly("raw_bytes",
                               [](const parser::ParsedField& f) { return py::bytes(f.rawString); })
        .def_property_readonly("parsed",
                               [](const parser::ParsedField& f) { return toPython(f.parsed); })
        .def_property_readonly("issues",
                               [](const parser::ParsedField& f) {
                                   py::list messages;
                                   for (const auto& issue : f.issues) {
                                       messages.append(textOf(issue->message));
                                   }
                                   return messages;
                               })
        .def("__repr__", [](const parser::ParsedField& f) {
            return "<ParsedField " + std::string(py::repr(textOf(f.name))) + ">";
        });

    py::class_<parser::ParsedData, std::shared_ptr<parser::ParsedData>>(m, "ParsedData")
        .def_property_readonly("fields",
                               [](const parser::ParsedData& d) { return fieldList(d, false); })
        .def_property_readonly("fields_with_issues",
                               [](const parser::ParsedData& d) { return fieldList(d, true); })
        .def_property_readonly("fields_by_name",
                               [](const parser::ParsedData& d) {
                                   // Of two fields with one name the later wins.
                                   py::dict byName;
                                   for (const auto& field : d.fields()) {
                                       byName[textOf(field->name)] = py::cast(field);
                                   }
                                   return byName;
                               })
        .def_property_readonly("warnings",
                               [](const parser::ParsedData& d) {
                                   py::list messages;
                                   for (const auto& text : d.warnings())
                                       messages.append(textOf(text));
                                   return messages;
                               })
        .def("json", [](const parser::ParsedData& d) { return textOf(d.jsonString()); })
        .def("__repr__", [](const parser::ParsedData& d) {
            return "<ParsedData with " + std::to_string(d.fields().size()) + " fields>";
        });

    py::class_<PyParser>(m, "Parser")
        .def(py::init<const std::string&>(), py::arg("format"))
        .def("set_options", &PyParser::setOptions, py::arg("options"))
        .def_property_readonly("options", &PyParser::options)
        .def_property_readonly("format", &PyParser::format)
        .def("parse", &PyParser::parse, py::arg("data"));
}
