#include "ReportValues.h"

#include <cstddef>
#include <string>
#include <utility>

#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;

/** Rows up to this length stand as they are. */
constexpr size_t kMaxShort = 8;

/** Counts how many cells have another number than before. */
class CellMaker {
  public:
    Json make(int32_t now, std::optional<int32_t> was) {
        Json cell = {{"now", std::to_string(now)}, {"was", false}};
        if (was.has_value() && *was != now) {
            cell["was"] = std::to_string(*was);
            ++mChanged;
        }
        return cell;
    }

    Json make(const Values& now, const Values* was) {
        Json cells = Json::array();
        for (size_t i = 0; i < now.size(); ++i) {
            cells.push_back(make(now[i], was == nullptr ? std::nullopt : std::optional((*was)[i])));
        }
        return cells;
    }

    size_t changed() const { return mChanged; }

  private:
    size_t mChanged = 0;
};

bool haveSameForm(const Shape& left, const Shape& right) {
    const bool haveSameSizes = left.fields.size() == right.fields.size() &&
                               left.columns.size() == right.columns.size() &&
                               left.rest.size() == right.rest.size();
    return haveSameSizes && (left.columns.empty() || left.columns.front().values.size() ==
                                                             right.columns.front().values.size());
}

Json fieldsJson(const Shape& now, const Shape* was, CellMaker& cells) {
    Json fields = Json::array();
    for (size_t i = 0; i < now.fields.size(); ++i) {
        Json field =
                cells.make(now.fields[i].second,
                           was == nullptr ? std::nullopt : std::optional(was->fields[i].second));
        field["name"] = now.fields[i].first;
        fields.push_back(std::move(field));
    }
    return fields;
}

Json bandsJson(const Shape& now, const Shape* was, CellMaker& cells) {
    Json names = Json::array();
    Json rows = Json::array();
    for (size_t i = 0; i < now.columns.size(); ++i) {
        names.push_back(now.columns[i].name);
        const Json column = cells.make(now.columns[i].values,
                                       was == nullptr ? nullptr : &was->columns[i].values);
        for (size_t band = 0; band < column.size(); ++band) {
            if (i == 0) {
                rows.push_back({{"band", std::to_string(band + 1)}, {"cells", Json::array()}});
            }
            rows[band]["cells"].push_back(column[band]);
        }
    }
    return {{"names", std::move(names)}, {"rows", std::move(rows)}};
}

Json partsJson(const ReportValue& now, const ReportValue& was, CellMaker& cells) {
    const bool areRows = !now.shape.has_value() && !was.shape.has_value();
    if (areRows) {
        const bool isAlike = was.values != nullptr && was.values->size() == now.values->size();
        return {{"items", cells.make(*now.values, isAlike ? was.values : nullptr)}};
    }
    const Shape plain = {{}, {}, *now.values, ""};
    const Shape& shape = now.shape.has_value() ? *now.shape : plain;
    const bool isAlike = was.shape.has_value() && haveSameForm(shape, *was.shape);
    const Shape* const old = isAlike ? &*was.shape : nullptr;
    Json parts = {{"fields", fieldsJson(shape, old, cells)}};
    if (!shape.columns.empty()) {
        parts["bands"] = bandsJson(shape, old, cells);
    }
    if (!shape.rest.empty()) {
        parts["restName"] = shape.restName;
        parts["items"] = cells.make(shape.rest, old == nullptr ? nullptr : &old->rest);
    }
    return parts;
}

bool isShort(const ReportValue& value) {
    return value.values == nullptr ||
           (value.values->size() <= kMaxShort && !value.shape.has_value());
}

std::string shortText(const ReportValue& value) {
    if (value.values == nullptr) {
        return "absent";
    }
    const bool isListed = isShort(value) && !value.values->empty();
    return isListed ? listText(*value.values) : countText(value.values->size(), "value", "values");
}

}  // namespace

Json valuesJson(const ReportValue& now, const ReportValue& was) {
    Json json = {{"now", shortText(now)}, {"was", shortText(was)}};
    if (isShort(now)) {
        return json;
    }
    CellMaker cells;
    Json parts = partsJson(now, was, cells);
    if (cells.changed() > 0) {
        json["now"] = shortText(now) + ", " + std::to_string(cells.changed()) + " changed";
    } else if (was.values != nullptr && *was.values != *now.values) {
        parts["oldValues"] = listText(*was.values);
    }
    json["parts"] = std::move(parts);
    return json;
}

}  // namespace ormel::tools
