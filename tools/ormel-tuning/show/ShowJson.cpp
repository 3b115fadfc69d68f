#include <optional>
#include <utility>

#include "Shown.h"
#include "text/Names.h"

namespace ormel::tools {

namespace {

Json toJson(const Shape& shape) {
    Json json = Json::object();
    for (const auto& [name, value] : shape.fields) {
        json[name] = value;
    }
    if (!shape.columns.empty()) {
        Json& bands = json["bands"] = Json::array();
        for (size_t band = 0; band < shape.columns.front().values.size(); ++band) {
            Json& row = bands.emplace_back(Json::object());
            for (const Shape::Column& column : shape.columns) {
                row[column.name] = column.values[band];
            }
        }
    }
    if (!shape.rest.empty()) {
        json[shape.restName] = shape.rest;
    }
    return json;
}

Json toJson(const Origin& origin) {
    Json json = {{"parameter", parameterName(origin.param)}, {"origin", nameOf(origin.kind)}};
    if (origin.kind == Origin::Kind::LINE) {
        json["line"] = origin.line;
    }
    return json;
}

Json toJson(const ShownEntry& shown) {
    const auto [letters, meaning] = codeText(shown.entry.code);
    Json json = {{"device", deviceText(shown.entry.device)},
                 {"deviceId", shown.entry.device},
                 {"code", letters},
                 {"meaning", meaning},
                 {"values", shown.entry.values}};
    if (const auto shape = shapeOf(shown.entry.code, shown.entry.values); shape.has_value()) {
        json["structure"] = toJson(*shape);
    }
    Json& from = json["from"] = Json::array();
    for (const Origin& origin : shown.origins) {
        from.push_back(toJson(origin));
    }
    return json;
}

Json toJson(const ShownList& shown) {
    Json entries = Json::array();
    for (const ShownEntry& entry : shown.entries) {
        entries.push_back(toJson(entry));
    }
    return {{"list", shown.title}, {"builtIn", shown.isBuiltIn}, {"entries", std::move(entries)}};
}

Json toJson(const DocumentObject& object) {
    Json json = {{"object", object.title}};
    if (object.line != 0) {
        json["line"] = object.line;
    }
    json.update(object.fields);
    if (object.values != nullptr) {
        Json& values = json["values"] = Json::object();
        for (const auto& [param, list] : object.values->getValues()) {
            values[parameterName(param)] = list;
        }
    }
    return json;
}

}  // namespace

Json toJson(const Shown& shown) {
    Json json = Json::object();
    if (!shown.file.empty()) {
        json["file"] = shown.file;
    }
    Json& objects = json["objects"] = Json::array();
    for (const DocumentObject& object : shown.objects) {
        objects.push_back(toJson(object));
    }
    Json& lists = json["lists"] = Json::array();
    for (const ShownList& list : shown.lists) {
        lists.push_back(toJson(list));
    }
    return json;
}

}  // namespace ormel::tools
