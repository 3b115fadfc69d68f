// The builder of packed parameter lists.
#pragma once

#include <ormel/KivParameter.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace ormel {

class KivEffect;

/**
 * Collects effect parameter settings in a packed list (SpatializerParamParser.h).
 *
 * Entries are appended in call order: a parameter added twice appears twice. Values are not
 * checked, and an out-of-range parameter gets code 0. A command belongs to one thread.
 */
class SetParamCommand {
  public:
    /** Positions of the words at the start of a list. */
    enum ListHeader : size_t { LIST_ID, LIST_COUNT, kListHeaderWords };

    /** Positions of the words before the values of each entry. */
    enum EntryHeader : size_t { ENTRY_DEVICE, ENTRY_CODE, ENTRY_COUNT, kEntryHeaderWords };

    /** @param profileId word 0 of the list */
    explicit SetParamCommand(int profileId);
    SetParamCommand(const SetParamCommand&) = default;
    SetParamCommand(SetParamCommand&&) = default;
    SetParamCommand& operator=(const SetParamCommand&) = default;
    SetParamCommand& operator=(SetParamCommand&&) = default;

    /**
     * Fills in the count and sends the list to @p effect. May be called again.
     *
     * @return 0, with nothing sent, if there are no entries or the list was moved away; else the
     *         result of KivEffect::send()
     */
    virtual int execute(KivEffect& effect);

    virtual ~SetParamCommand() = default;

    /** Sets the device (an Android output device bit) of entries added from now on. */
    void setDeviceId(int deviceId) { mDeviceId = deviceId; }

    void add(KivParameter param, int value);
    void add(KivParameter param, const std::vector<int>& values);

    /**
     * Takes values in braces, so that a 0 among them is not taken for a null list. A template, so
     * that {} still selects the overload for lists.
     */
    template <typename = void>
    void add(KivParameter param, std::initializer_list<int> values) {
        addEntry(param, values, {});
    }

    /**
     * Adds one entry with the values of all @p lists, in order; without lists, an entry of no
     * values. A null list has no values. mParams may be among the lists.
     */
    void add(KivParameter param, std::initializer_list<const std::vector<int>*> lists) {
        addEntry(param, {}, {lists.begin(), lists.size()});
    }
    template <typename List>
    void add(KivParameter param, const std::vector<List*>& lists) {
        addEntry(param, {}, {lists.data(), lists.size()});
    }

    /** The same, after a leading value. */
    void add(KivParameter param, int first, std::initializer_list<const std::vector<int>*> lists) {
        addEntry(param, {first}, {lists.begin(), lists.size()});
    }
    template <typename List>
    void add(KivParameter param, int first, const std::vector<List*>& lists) {
        addEntry(param, {first}, {lists.data(), lists.size()});
    }

    /** -1 until setDeviceId() is called. */
    int32_t mDeviceId = -1;

    /** Number of entries added so far. */
    int32_t mParamCount = 0;

    /**
     * The list under construction. Word 1, its parameter count, stays 0 until execute() or the
     * list's next owner fills it in.
     */
    std::vector<int32_t> mParams;

  private:
    struct Lists {
        const std::vector<int>* const* first = nullptr;
        size_t count = 0;

        const std::vector<int>* const* begin() const { return first; }
        const std::vector<int>* const* end() const { return first + count; }
    };

    void addEntry(KivParameter param, std::initializer_list<int> leading, Lists lists);
};

}  // namespace ormel
