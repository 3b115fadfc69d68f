// Polymorphic objects made from the rows of a constant table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <set>
#include <type_traits>

namespace ormel {

template <typename Base, size_t kCount, typename... Classes>
class ObjectBlock;

/** The classes of a table's objects. */
template <typename... Classes>
struct ObjectClasses {
    /** The number that stands for a class in a row. */
    template <typename Class>
    static constexpr uint8_t kKind = [] {
        const bool matches[] = {std::is_same_v<Class, Classes>...};
        uint8_t kind = 0;
        while (!matches[kind]) {
            ++kind;
        }
        return kind;
    }();

    /** Calls @p visit with a null pointer to each class. */
    template <typename Visitor>
    static constexpr void forEachClass(Visitor visit) {
        (visit(static_cast<Classes*>(nullptr)), ...);
    }

    /** The objects of a table with kCount rows. */
    template <typename Base, size_t kCount>
    using Block = ObjectBlock<Base, kCount, Classes...>;
};

/**
 * One object for each row of a table, each of one of @p Classes. The objects are stored in table
 * order, so sets of pointers, which order by address, are in table order on every run. They are
 * never destroyed.
 *
 * A row's member kind tells the class of its object (ObjectClasses::kKind), and its
 * make<Class>(place) constructs the object at place.
 */
template <typename Base, size_t kCount, typename... Classes>
class ObjectBlock {
  public:
    template <typename Row>
    explicit ObjectBlock(const Row (&rows)[kCount]) {
        using Make = Base* (*)(const Row& row, void* place);
        constexpr Make kMakers[] = {&make<Classes, Row>...};
        for (size_t i = 0; i < kCount; ++i) {
            mObjects[i] = kMakers[rows[i].kind](rows[i], &mPlaces[i]);
            mPointers.insert(mPointers.end(), mObjects[i]);
        }
    }
    ObjectBlock(const ObjectBlock&) = delete;
    ObjectBlock& operator=(const ObjectBlock&) = delete;

    const std::set<Base*>& pointers() const { return mPointers; }

    /** @param i index of the row, below kCount */
    // cppcheck-suppress CastIntegerToAddressAtReturn // What is returned is a pointer.
    Base* at(size_t i) const { return mObjects[i]; }

  private:
    template <typename Class, typename Row>
    static Base* make(const Row& row, void* place) {
        return row.template make<Class>(place);
    }

    std::array<std::aligned_union_t<0, Classes...>, kCount> mPlaces;
    std::array<Base*, kCount> mObjects;
    std::set<Base*> mPointers;
};

}  // namespace ormel
