#include "EffectValues.h"

#include <ormel/KivParameter.h>

#include <algorithm>
#include <iomanip>
#include <utility>

#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** Bands stand side by side, as many as a line takes. */
constexpr size_t kBandsPerLine = 10;
constexpr int kBandWidth = 7;
constexpr int kBandNameWidth = 16;

/** The parts by name, the rest under its own, and those of bands under "bands", band by band. */
Json partsJson(const Shape& shape) {
    Json json = Json::object();
    for (const auto& [name, value] : shape.fields) {
        json[name] = value;
    }
    if (!shape.columns.empty()) {
        json["bands"] = Json::array();
    }
    for (const Shape::Column& column : shape.columns) {
        for (size_t band = 0; band < column.values.size(); ++band) {
            json["bands"][band][column.name] = column.values[band];
        }
    }
    if (!shape.rest.empty()) {
        json[shape.restName] = shape.rest;
    }
    return json;
}

size_t bandCount(const Shape& shape) {
    return shape.columns.empty() ? 0 : shape.columns.front().values.size();
}

/** Why the front does not hand an entry on. */
std::string reasonOf(const Entry& entry) {
    if (entry.code == kivCode(GEBS)) {
        return "20 bands take 41 values, and it has " + std::to_string(entry.values.size());
    }
    return entry.code == kivCode(VBON) ? "the document has no tuning device" : "it is dropped";
}

}  // namespace

void to_json(Json& json, const EffectValue& value) {
    const auto [letters, meaning] = codeText(value.code);
    json = {{"device", deviceText(value.device)},
            {"deviceId", value.device},
            {"code", letters},
            {"meaning", meaning},
            {"values", value.values.value_or(std::vector<int32_t>())}};
    if (hasParts(value.shape)) {
        json["structure"] = partsJson(value.shape);
    }
    json["from"] = Json::array();
    for (size_t i = 0; i < value.origins.size(); ++i) {
        const auto& [kind, param, line] = value.origins[i];
        Json& from = json["from"].emplace_back(
                Json{{"parameter", parameterName(param)}, {"origin", nameOf(kind)}});
        if (kind == Origin::Kind::LINE) {
            from["line"] = line;
        }
        if (i < value.reasons.size()) {
            from["why"] = value.reasons[i];
        }
    }
}

EffectValue valueOf(const Entry& entry, Origins origins) {
    Shape shape = shapeOf(entry.code, entry.values).value_or(Shape{{}, {}, entry.values, ""});
    return {entry.device, entry.code, entry.values, "", std::move(shape), std::move(origins)};
}

EffectValue keptValue(const AppliedList* applied, int32_t device, int32_t code) {
    if (applied == nullptr || applied->values.count({device, code}) == 0) {
        return {device, code};
    }
    const std::vector<int32_t>& kept = applied->values.at({device, code});
    EffectValue value = valueOf({device, code, kept}, {});
    const auto& entries = applied->list.entries;
    const bool isOwn = std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) {
        return entry.device == device && entry.code == code && entry.values == kept;
    });
    // The front puts the mix matrix of the speaker's tuning behind the first value of the speaker's
    // output mode.
    if (!isOwn && code == kivCode(DOM)) {
        value.shape = shapeOf(kept, {kParameterNames[VIRTUALIZER_ENABLE]},
                              kParameterNames[OUTPUT_MIX_MATRIX])
                              .value_or(value.shape);
    }
    return value;
}

std::vector<EffectValue> keptValues(const AppliedList& applied, const EntryOrigins& origins) {
    const std::vector<Entry>& entries = applied.list.entries;
    const std::vector<Origins> from = origins.originsOf(applied.list);
    std::set<std::pair<int32_t, int32_t>> places;
    std::vector<EffectValue> kept;
    for (size_t i = entries.size(); i-- > 0;) {
        const auto& [device, code, values] = entries[i];
        if (places.emplace(device, code).second) {
            EffectValue& value = kept.emplace_back(keptValue(&applied, device, code));
            value.origins = from[i];
            value.notSent = value.values.has_value() ? "" : reasonOf(entries[i]);
        }
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

bool hasParts(const Shape& shape) {
    return !shape.fields.empty() || !shape.columns.empty();
}

bool haveSameParts(const Shape& left, const Shape& right) {
    return left.fields.size() == right.fields.size() &&
           left.columns.size() == right.columns.size() && bandCount(left) == bandCount(right);
}

void printValues(const Shape& shape, std::ostream& out) {
    const std::string indent(kValueColumn, ' ');
    std::vector<std::string> fields;
    for (const auto& [name, value] : shape.fields) {
        const std::string word = name == "endpoint" ? endpointName(value) : "";
        fields.push_back(name + ' ' + (word.empty() ? std::to_string(value) : word));
    }
    if (hasParts(shape) ? !shape.rest.empty() : shape.rest.size() > 1) {
        fields.push_back(shape.restName + (hasParts(shape) ? " " : "") + listText(shape.rest));
    }
    if (!fields.empty()) {
        out << indent << wrapped(joined(fields, ", "), kValueColumn) << '\n';
    }
    for (size_t begin = 0; begin < bandCount(shape); begin += kBandsPerLine) {
        for (const Shape::Column& column : shape.columns) {
            out << indent << std::left << std::setw(kBandNameWidth) << column.name << std::right;
            const size_t end = std::min(column.values.size(), begin + kBandsPerLine);
            for (size_t band = begin; band < end; ++band) {
                out << std::setw(kBandWidth) << column.values[band];
            }
            out << '\n';
        }
    }
}

std::set<int32_t> sourceLines(const Origins& origins) {
    std::set<int32_t> lines;
    for (const Origin& origin : origins) {
        if (origin.kind == Origin::Kind::LINE) {
            lines.insert(static_cast<int32_t>(origin.line));
        }
    }
    return lines;
}

std::string linesText(const std::set<int32_t>& lines) {
    const std::string text = listText({lines.begin(), lines.end()});
    return text.empty() ? "" : (lines.size() == 1 ? "line " : "lines ") + text;
}

}  // namespace ormel::tools
