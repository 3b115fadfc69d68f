#include <ormel/KivEffect.h>
#include <ormel/SetParamCommand.h>

#include <algorithm>
#include <cstddef>

namespace ormel {

static_assert(VOL == 0 && SDFA == 89,
              "callers know the first 90 parameters by number: add rows behind them");
static_assert(kivCode(VOL) == 0x006c6f76 && kivCode(DEON) == 0x6e6f6564,
              "codes begin with the least significant byte");

SetParamCommand::SetParamCommand(int profileId) : mParams{profileId, 0} {}

int SetParamCommand::execute(KivEffect& effect) {
    if (mParamCount == 0 || mParams.size() < kListHeaderWords) {
        return 0;
    }
    mParams[LIST_COUNT] = mParamCount;
    return effect.send(0, mParams);
}

void SetParamCommand::add(KivParameter param, int value) {
    addEntry(param, {value}, {});
}

void SetParamCommand::add(KivParameter param, const std::vector<int>& values) {
    add(param, {&values});
}

void SetParamCommand::addEntry(KivParameter param, std::initializer_list<int> leading,
                               Lists lists) {
    const size_t at = mParams.size();
    // mParams may be among the lists, and grows below.
    const auto sizeOf = [this, at](const std::vector<int>* list) {
        return list == &mParams ? at : list->size();
    };
    size_t count = leading.size();
    for (const std::vector<int>* const list : lists) {
        count += list == nullptr ? 0 : sizeOf(list);
    }
    mParams.resize(at + kEntryHeaderWords + count);
    auto word = mParams.begin() + static_cast<ptrdiff_t>(at);
    *word++ = mDeviceId;
    *word++ = kivCode(param);
    *word++ = static_cast<int32_t>(count);
    word = std::copy(leading.begin(), leading.end(), word);
    for (const std::vector<int>* const list : lists) {
        if (list != nullptr) {
            word = std::copy_n(list->begin(), sizeOf(list), word);
        }
    }
    ++mParamCount;
}

}  // namespace ormel
