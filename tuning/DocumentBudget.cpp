#include <ormel/DocumentBudget.h>

namespace ormel {

namespace {

std::string exceeded(const char* what, uint64_t amount, uint64_t bound) {
    return amount <= bound ? ""
                           : std::string(what) + ": " + std::to_string(amount) + " of at most " +
                                     std::to_string(bound);
}

}  // namespace

std::string DocumentBudget::describe() const {
    std::string text = exceeded("too much work", mWork, mWorkLimit);
    if (text.empty()) {
        text = exceeded("too many bytes of lists, values and names", mPayloadBytes,
                        kMaxPayloadBytes);
    }
    if (text.empty()) {
        text = exceeded("too many bytes of objects and map entries", mHolderBytes, kMaxHolderBytes);
    }
    return text;
}

}  // namespace ormel
