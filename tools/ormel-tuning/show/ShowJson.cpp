#include <optional>
#include <utility>

#include "Shown.h"
#include "text/Names.h"

namespace ormel::tools {

namespace {

/** Bands one by one, as a document has them. */
Json bandsOf(const std::vector<Shape::Column>& columns) {
    Json bands = Json::array();
    for (size_t band = 0; band < columns.front().values.size(); ++band) {
        for (const Shape::Column& column : columns) {
            bands[band][column.name] = column.values[band];
        }
    }
    return bands;
}

}  // namespace

void to_json(Json& json, const Shape& shape) {
    json = Json::object();
    for (const auto& [name, value] : shape.fields) {
        json[name] = value;
    }
    if (!shape.columns.empty()) {
        json["bands"] = bandsOf(shape.columns);
    }
    if (!shape.rest.empty()) {
        json[shape.restName] = shape.rest;
    }
}

void to_json(Json& json, const Origin& origin) {
    json = {{"parameter", parameterName(origin.param)}, {"origin", nameOf(origin.kind)}};
    if (origin.kind == Origin::Kind::LINE) {
        json["line"] = origin.line;
    }
}

void to_json(Json& json, const ShownEntry& shown) {
    const auto [letters, meaning] = codeText(shown.entry.code);
    json = {{"device", deviceText(shown.entry.device)},
            {"deviceId", shown.entry.device},
            {"code", letters},
            {"meaning", meaning},
            {"values", shown.entry.values}};
    if (const auto shape = shapeOf(shown.entry.code, shown.entry.values); shape.has_value()) {
        json["structure"] = *shape;
    }
    json["from"] = shown.origins;
}

void to_json(Json& json, const ShownList& shown) {
    json = {{"list", shown.title}, {"builtIn", shown.isBuiltIn}, {"entries", shown.entries}};
}

void to_json(Json& json, const DocumentObject& object) {
    json = {{"object", object.title}};
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
}

void to_json(Json& json, const Shown& shown) {
    json = Json::object();
    if (!shown.file.empty()) {
        json["file"] = shown.file;
    }
    json["objects"] = shown.objects;
    json["lists"] = shown.lists;
}

}  // namespace ormel::tools
