// The bands of a document's curves: their frequencies, their lows and highs, and values that stand
// apart; and the rows of its mix matrices.
#include <ormel/SpatializerParamArray.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <vector>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** The bands of one section that one setter read, column by column. */
struct Curve {
    std::vector<size_t> bands;
    std::vector<const std::vector<int>*> columns;

    const std::vector<int>& frequencies() const { return *columns.front(); }
};

class CurveCheck {
  public:
    explicit CurveCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {}

    void run() {
        collect();
        for (const auto& [setter, curves] : mCurves) {
            const std::vector<int>* const usual = usualFrequencies(curves);
            const bool isThresholds =
                    dynamic_cast<const RegulatorTuningValueSetter*>(setter) != nullptr;
            for (const Curve& curve : curves) {
                if (isThresholds) {
                    checkThresholds(curve);
                }
                const bool isUsual = usual == nullptr || curve.frequencies() == *usual;
                if (!isUsual || !ascends(curve.frequencies())) {
                    addFrequency(curve, isUsual ? nullptr : usual);
                } else if (usual != nullptr) {
                    checkColumns(curve, curves, isThresholds ? 3 : curve.columns.size());
                }
            }
        }
    }

  private:
    void collect() {
        const auto& elements = mContext.trace.getElements();
        for (size_t i = 1; i < mDocument.size();) {
            const ReadElement& record = elements[i];
            const size_t container = mDocument.parent(i);
            const size_t end = mDocument.end(container);
            if (record.as != ReadElement::As::BAND || container == 0) {
                ++i;
                continue;
            }
            if (mContext.section(i).sourceOf(record.setter->getParam(0)) != container) {
                i = end;
                continue;
            }
            Curve curve;
            for (; i < end; i = mDocument.end(i)) {
                if (elements[i].as == ReadElement::As::BAND) {
                    curve.bands.push_back(i);
                }
            }
            for (size_t column = 0; column < record.setter->getParamCount(); ++column) {
                curve.columns.push_back(
                        &mContext.valuesOf(record.section, record.setter->getParam(column)));
            }
            const bool isWhole = std::all_of(
                    curve.columns.begin(), curve.columns.end(),
                    [&](const auto* each) { return each->size() == curve.bands.size(); });
            if (isWhole) {
                mCurves[record.setter].push_back(std::move(curve));
            }
        }
    }

    /** The frequencies that most curves have, if two or more have them; else null. */
    static const std::vector<int>* usualFrequencies(const std::vector<Curve>& curves) {
        std::map<std::vector<int>, size_t> counts;
        for (const Curve& curve : curves) {
            const auto found = counts.try_emplace(curve.frequencies()).first;
            if (++found->second >= 2 && 2 * found->second > curves.size()) {
                return &curve.frequencies();
            }
        }
        return nullptr;
    }

    static bool ascends(const std::vector<int>& frequencies) {
        return std::adjacent_find(frequencies.begin(), frequencies.end(), std::greater_equal<>()) ==
               frequencies.end();
    }

    /** @param usual null where the curve has no others to differ from */
    void addFrequency(const Curve& curve, const std::vector<int>* usual) const {
        const std::vector<int>& all = curve.frequencies();
        const bool isAscending = ascends(all);
        auto at =
                usual == nullptr
                        ? std::adjacent_find(all.begin(), all.end(), std::greater_equal<>()) + 1
                        : std::mismatch(all.begin(), all.end(), usual->begin(), usual->end()).first;
        const bool isShort = usual != nullptr && all.size() < usual->size();
        const size_t place = static_cast<size_t>(at - all.begin());
        const std::string expected =
                usual != nullptr && place < usual->size() ? std::to_string((*usual)[place]) : "";
        if (isShort && isAscending) {
            mContext.add(Rule::FREQUENCY_UNLIKE, mDocument.parent(curve.bands.front()),
                         "lacks the band of frequency " + expected + ", which the others have");
            return;
        }
        const size_t band = curve.bands[std::min(place, curve.bands.size() - 1)];
        const std::string what =
                std::to_string(all[std::min(place, all.size() - 1)]) +
                (isAscending ? " is unlike the others of its kind" : " is out of order") +
                (expected.empty() ? "" : "; they have " + expected);
        mContext.add(isAscending ? Rule::FREQUENCY_UNLIKE : Rule::FREQUENCY_ORDER, band,
                     "frequency " + what);
    }

    void checkThresholds(const Curve& curve) const {
        std::vector<size_t> crossed;
        for (size_t i = 0; i < curve.bands.size(); ++i) {
            if ((*curve.columns[1])[i] > (*curve.columns[2])[i]) {
                crossed.push_back(curve.bands[i]);
            }
        }
        if (crossed.size() == 1) {
            mContext.add(Rule::LOW_ABOVE_HIGH, crossed.front(),
                         "has a threshold_low above its threshold_high");
        } else if (!crossed.empty()) {
            mContext.add(Rule::LOW_ABOVE_HIGH, mDocument.parent(crossed.front()),
                         "has a threshold_low above the threshold_high in " +
                                 countText(crossed.size(), "band", "bands"));
        }
    }

    /** Values that stand apart from their column where those of no other curve do. */
    void checkColumns(const Curve& curve, const std::vector<Curve>& curves, size_t end) const {
        for (size_t column = 1; column < end; ++column) {
            const std::vector<int>& values = *curve.columns[column];
            const size_t largest = largestOf(values);
            for (size_t i = 0; i < values.size(); ++i) {
                const bool isTurned = isTurnedAt(values, i);
                if ((isTurned || (i == largest && isOutOfProportion(values, i))) &&
                    std::none_of(curves.begin(), curves.end(), [&](const Curve& other) {
                        return &other != &curve && other.columns[column]->size() == values.size() &&
                               agrees(*other.columns[column], values[i], i, isTurned);
                    })) {
                    mContext.add(Rule::IMPLAUSIBLE, curve.bands[i],
                                 "has " + std::to_string(values[i]) + " between " +
                                         std::to_string(values[i == 0 ? 1 : i - 1]) + " and " +
                                         std::to_string(values[i + 1 < values.size() ? i + 1 : 0]));
                }
            }
        }
    }

    static bool agrees(const std::vector<int>& other, int value, size_t at, bool isTurned) {
        return isTurned ? isTurnedAt(other, at) : std::abs(other[at]) >= std::abs(value);
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
    std::map<const ValueSetter*, std::vector<Curve>> mCurves;
};

/** A mix matrix against the built-in one, whose blocks each begin with a row of two numbers. */
class MatrixCheck {
  public:
    MatrixCheck(const CheckContext& context, size_t section, size_t source)
        : mContext(context), mSource(source) {
        for (size_t i = source; i < context.document.end(source); ++i) {
            if (context.read(i).as == ReadElement::As::ROW) {
                mRows.push_back(i);
                const auto attributes = context.document.attributes(i);
                std::vector<int> numbers;
                string2IntVector(attributes.empty() ? "" : attributes.front().text, numbers);
                mNumbers.push_back(std::move(numbers));
            }
        }
        mLength = context.valuesOf(section, OUTPUT_MIX_MATRIX).size();
    }

    void run() const {
        const auto& builtIn = SpatializerParamArray::kDefaultMixMatrix;
        std::map<size_t, size_t> lengths;
        for (const auto& row : mNumbers) {
            ++lengths[row.size()];
        }
        const auto usual = std::max_element(
                lengths.begin(), lengths.end(),
                [](const auto& one, const auto& other) { return one.second < other.second; });
        size_t head = 0;
        size_t at = 0;
        for (size_t i = 0; i < mRows.size(); ++i) {
            const std::vector<int>& row = mNumbers[i];
            const bool isOdd = row.size() != 2 && (row.size() != usual->first || beginsBlock(row));
            if (mLength != builtIn.size() && isOdd) {
                addLength(mRows[i], row.size(), usual->first);
                return;
            }
            const bool isHead = mLength == builtIn.size() && at == head && at < builtIn.size();
            if (isHead &&
                (row.size() < 2 || row[0] != builtIn[head] || row[1] != builtIn[head + 1])) {
                mContext.add(Rule::MIX_MATRIX_BLOCK, mRows[i],
                             "stands where the built-in matrix has a row of " +
                                     std::to_string(builtIn[head]) + ", " +
                                     std::to_string(builtIn[head + 1]));
                return;
            }
            if (isHead) {
                head += 2 + static_cast<size_t>(builtIn[head + 1]);
            }
            at += row.size();
        }
        if (mLength != builtIn.size()) {
            addLength(mRows.empty() ? mSource : mContext.document.parent(mRows.front()), mLength,
                      builtIn.size());
        }
    }

  private:
    /** Whether a row begins like one of the built-in matrix's three rows of two. */
    static bool beginsBlock(const std::vector<int>& row) {
        const auto& builtIn = SpatializerParamArray::kDefaultMixMatrix;
        for (size_t i = 0; i < builtIn.size(); i += 2 + static_cast<size_t>(builtIn[i + 1])) {
            if (row.size() > 1 && row[0] == builtIn[i] && row[1] == builtIn[i + 1]) {
                return true;
            }
        }
        return false;
    }

    void addLength(size_t element, size_t length, size_t wanted) const {
        mContext.add(Rule::MIX_MATRIX_LENGTH, element,
                     "has " + countText(length, "number", "numbers") + " in place of " +
                             std::to_string(wanted));
    }

    const CheckContext& mContext;
    const size_t mSource;
    size_t mLength;
    std::vector<size_t> mRows;
    std::vector<std::vector<int>> mNumbers;
};

}  // namespace

void checkCurves(const CheckContext& context) {
    CurveCheck(context).run();
    const auto& sections = context.trace.getSections();
    for (size_t i = 0; i < sections.size(); ++i) {
        const size_t source = sections[i].sourceOf(OUTPUT_MIX_MATRIX);
        if (sections[i].owner == ParameterOwner::TUNING && sections[i].object != nullptr &&
            source != ReadSection::kNoElement) {
            MatrixCheck(context, i, source).run();
        }
    }
}

}  // namespace ormel::tools
