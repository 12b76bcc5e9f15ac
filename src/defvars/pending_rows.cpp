#include "defvars/pending_rows.hpp"

#include <algorithm>
#include <functional>

namespace vex {

void PendingRows::countCandidate(std::int32_t row, bool canBeSolvedFor) {
    ++at(row).nbCandidates;
    if (canBeSolvedFor) ++at(row).nbSolvable;
}

void PendingRows::insert(std::int32_t row) {
    Bucket& bucket = buckets_[keyOf(row)];
    at(row).isPending = true;
    ++bucket.nbPending;
    if (bucket.ascending.empty() || bucket.ascending.back() < row) {
        bucket.ascending.push_back(row);
    } else {
        bucket.others.push_back(row);
        std::push_heap(bucket.others.begin(), bucket.others.end(), std::greater<>());
    }
}

void PendingRows::uncountCandidate(std::int32_t row, bool canBeSolvedFor) {
    if (!at(row).isPending) return;
    remove(row, buckets_.find(keyOf(row)));
    --at(row).nbCandidates;
    if (canBeSolvedFor) --at(row).nbSolvable;
    if (hasSolvable(row)) insert(row);
}

std::int32_t PendingRows::takeFirst() {
    const auto found = buckets_.begin();
    auto& [key, bucket] = *found;
    auto& [ascending, next, others, nbPending] = bucket;
    while (next < ascending.size() && isOutdated(ascending[next], key)) ++next;
    while (!others.empty() && isOutdated(others.front(), key)) {
        std::pop_heap(others.begin(), others.end(), std::greater<>());
        others.pop_back();
    }
    const bool takesOther =
        next == ascending.size() || (!others.empty() && others.front() < ascending[next]);
    const std::int32_t row = takesOther ? others.front() : ascending[next];
    remove(row, found);
    return row;
}

PendingRows::Key PendingRows::keyOf(std::int32_t row) const {
    return static_cast<Key>(at(row).nbCandidates) << 32 | static_cast<Key>(at(row).nbSolvable);
}

bool PendingRows::isOutdated(std::int32_t row, Key key) const {
    return !at(row).isPending || keyOf(row) != key;
}

void PendingRows::remove(std::int32_t row, Buckets::iterator bucket) {
    at(row).isPending = false;
    if (--bucket->second.nbPending == 0) buckets_.erase(bucket);
}

}  // namespace vex
