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
 * Gathers effect parameter settings in a packed list (see SpatializerParamParser.h).
 *
 * Entries are appended as they come: a parameter added twice stands there twice, and no value is
 * checked. A parameter that is none gets code 0. A command belongs to one thread.
 */
class SetParamCommand {
  public:
    /** Places of the words that a list begins with. */
    enum ListHeader : size_t { LIST_ID, LIST_COUNT, kListHeaderWords };

    /** Places of the words that stand before the values of every entry. */
    enum EntryHeader : size_t { ENTRY_DEVICE, ENTRY_CODE, ENTRY_COUNT, kEntryHeaderWords };

    /** @param profileId word 0 of the list */
    explicit SetParamCommand(int profileId);
    SetParamCommand(const SetParamCommand&) = default;
    SetParamCommand(SetParamCommand&&) = default;
    SetParamCommand& operator=(const SetParamCommand&) = default;
    SetParamCommand& operator=(SetParamCommand&&) = default;

    /**
     * Sends the list to @p effect, its count filled in. May be called again.
     *
     * @return 0 without entries or after the list was taken, when nothing is sent; else what
     *         KivEffect::send returns
     */
    virtual int execute(KivEffect& effect);

    virtual ~SetParamCommand() = default;

    /** The device (an Android output device bit) of all entries added from now on. */
    void setDeviceId(int deviceId) { mDeviceId = deviceId; }

    void add(KivParameter param, int value);
    void add(KivParameter param, const std::vector<int>& values);

    /**
     * Values that are written out, so that a 0 among them is not taken for a null list. Being a
     * template, it leaves {}, which would fit either, to the lists.
     */
    template <typename = void>
    void add(KivParameter param, std::initializer_list<int> values) {
        addEntry(param, values, {});
    }

    /**
     * One entry with the values of all @p lists, one list after another; without lists, one of no
     * values. The command's own list may be among them; null stands for no values.
     */
    void add(KivParameter param, std::initializer_list<const std::vector<int>*> lists) {
        addEntry(param, {}, {lists.begin(), lists.size()});
    }
    template <typename List>
    void add(KivParameter param, const std::vector<List*>& lists) {
        addEntry(param, {}, {lists.data(), lists.size()});
    }

    /** The same behind a leading value. */
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
