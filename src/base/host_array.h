// Arrays the host passes in and gets back: elements, a lower bound, and "has no elements yet".
//
// Behaviour depends on all three. `resize` redimensions from index 0, as a routine that rebuilds an array
// does; `extendTo` keeps the elements and the lower bound, as one that appends does.
#pragma once

#include <cstddef>
#include <vector>

#include "base/failure.h"

namespace ovno2 {

template <class Element>
class HostArray {
  public:
    HostArray() = default;
    explicit HostArray(std::vector<Element> elements, Long lowerBound = 0)
        : elements_(std::move(elements)), lower_(lowerBound), kept_(elements_.size()) {}

    bool hasElements() const { return !elements_.empty(); }
    std::size_t size() const { return elements_.size(); }
    Long lowerBound() const { return lower_; }
    Long upperBound() const {
        return lower_ + static_cast<Long>(elements_.size()) - 1;
    }  // lower - 1 without elements

    // How many of the leading elements are still those the array was made with: what the host keeps in them
    // beyond the module's knowledge stays with them.
    std::size_t kept() const { return kept_; }

    // Throw RuntimeFailure 9 outside the bounds.
    Element& at(Long index) { return elements_[offset(index)]; }
    const Element& at(Long index) const { return elements_[offset(index)]; }

    void clear() {
        elements_.clear();
        lower_ = 0;
        kept_ = 0;
    }
    // Exactly indexes 0 to `upper`, elements new. Negative `upper` leaves no elements.
    void resize(Long upper) {
        elements_.assign(upper < 0 ? 0 : static_cast<std::size_t>(upper) + 1, Element());
        lower_ = 0;
        kept_ = 0;
    }
    // Up to index `upper`, keeping what is there; an array without elements starts at index 0.
    void extendTo(Long upper) {
        if (elements_.empty()) lower_ = 0;
        if (upper < lower_) throw RuntimeFailure(subscriptOutOfRange);
        elements_.resize(static_cast<std::size_t>(upper - lower_) + 1);
        if (kept_ > elements_.size()) kept_ = elements_.size();
    }

    std::vector<Element>& elements() { return elements_; }
    const std::vector<Element>& elements() const { return elements_; }

  private:
    std::size_t offset(Long index) const {
        if (index < lower_ || index > upperBound()) throw RuntimeFailure(subscriptOutOfRange);
        return static_cast<std::size_t>(index - lower_);
    }

    std::vector<Element> elements_;
    Long lower_ = 0;
    std::size_t kept_ = 0;
};

using TextArray = HostArray<Text>;
using LongArray = HostArray<Long>;

// A two-dimensional array of texts with any lower bounds, such as the host's field-definition tables. Rows
// are counted from 0 in their order, whatever the host's lower bound is; columns keep the host's own indexes.
class TextTable {
  public:
    TextTable() = default;
    // `cells` row by row, rows * columns of them; the first column has the index `firstColumn`.
    TextTable(std::vector<Text> cells, std::size_t rows, std::size_t columns, Long firstColumn = 0)
        : cells_(std::move(cells)), rows_(rows), columns_(columns), firstColumn_(firstColumn) {}

    std::size_t rows() const { return rows_; }
    Long firstColumn() const { return firstColumn_; }
    Long lastColumn() const { return firstColumn_ + static_cast<Long>(columns_) - 1; }

    // Throws RuntimeFailure 9 outside the bounds.
    const Text& at(std::size_t row, Long column) const {
        if (row >= rows_ || column < firstColumn_ || column > lastColumn())
            throw RuntimeFailure(subscriptOutOfRange);
        return cells_[row * columns_ + static_cast<std::size_t>(column - firstColumn_)];
    }

  private:
    std::vector<Text> cells_;
    std::size_t rows_ = 0;
    std::size_t columns_ = 0;
    Long firstColumn_ = 0;
};

}  // namespace ovno2
