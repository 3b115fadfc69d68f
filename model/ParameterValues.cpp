#include <ormel/ParameterValues.h>

#include <utility>

namespace ormel {

bool ParameterValues::isDirty() const {
    return mDirty;
}

void ParameterValues::setDirty(bool dirty) {
    mDirty = dirty;
}

void ParameterValues::set(Parameter param, std::vector<int> values) {
    mSetCount += values.size();
    mValues.insert_or_assign(param, std::move(values));
    mDirty = true;
}

std::string ParameterValues::valuesToString() const {
    std::string text;
    for (const auto& [param, values] : mValues) {
        if (param == IEQ_ID) {
            continue;
        }
        text.append(parameterName(param)).append("=");
        for (const int value : values) {
            text.append(std::to_string(value)).append(",");
        }
        text.append("\n");
    }
    return text;
}

void ParameterValues::fillAbsentParams() {
    for (const Parameter param : getValidParams()) {
        mValues.try_emplace(param);
    }
}

}  // namespace ormel
