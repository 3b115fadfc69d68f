// Registries of polymorphic objects that are made from the rows of a table.
#pragma once

#include <iterator>
#include <set>
#include <variant>
#include <vector>

namespace ormel {

/**
 * One object of a @p Variant of classes per row of a table, all in one block, so that their order
 * by address, which the sets of pointers follow, is the order of the table on every run.
 */
template <typename Base, typename Variant>
class ObjectBlock {
  public:
    /** @param rows rows whose member make(row) makes the row's object */
    template <typename Rows>
    explicit ObjectBlock(const Rows& rows) {
        mObjects.reserve(std::size(rows));
        for (const auto& row : rows) {
            Variant& object = mObjects.emplace_back(row.make(row));
            mPointers.insert(std::visit([](Base& made) { return &made; }, object));
        }
    }
    ObjectBlock(const ObjectBlock&) = delete;
    ObjectBlock& operator=(const ObjectBlock&) = delete;

    const std::set<Base*>& pointers() const { return mPointers; }

  private:
    std::vector<Variant> mObjects;
    std::set<Base*> mPointers;
};

}  // namespace ormel
