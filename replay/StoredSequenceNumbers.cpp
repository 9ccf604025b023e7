#include "replay/StoredSequenceNumbers.h"

namespace Velo::OS::Telemetry::replay {

namespace {

// Keys of the store. Those of event names begin like this.
const std::string kGlobal = "global";
const std::string kPerType = "event ";

StoreFile& withTable(StoreFile& store) {
    store.createTable(StoreFile::kSequenceNumbers);
    return store;
}

}  // namespace

StoredSequenceNumbers::StoredSequenceNumbers(StoreFile& store)
    : store_(withTable(store)),
      reserve_(store,
               "INSERT INTO sequence_numbers VALUES(?1, 1 + ?2) ON CONFLICT(sequence) DO UPDATE SET next = next + ?2"
               " WHERE typeof(next) = 'integer' AND next BETWEEN 1 AND 9223372036854775807 - ?2 RETURNING next") {
    reserve(global_, kGlobal);
}

/// A new batch in place of one that is used up.
void StoredSequenceNumbers::reserve(Range& range, const std::string& sequence) {
    const std::optional<int64_t> end = reserve_.bind(1, sequence).bind(2, kBatch).run();
    store_.checkInPlace();
    if (!end) store_.fail("the sequence \"" + sequence + "\" holds no number to go on from");
    range = {*end - kBatch, *end};
}

/// Prefix and name make the sequence's key in the store.
uint64_t StoredSequenceNumbers::draw(Range& range, const std::string& prefix, const std::string& eventName) {
    if (range.next == range.end) reserve(range, prefix + eventName);
    return static_cast<uint64_t>(range.next++);
}

uint64_t StoredSequenceNumbers::getNextGlobalSequenceNumber(bool /*priority*/) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return draw(global_, kGlobal, {});
}

uint64_t StoredSequenceNumbers::getNextPerTypeSequenceNumber(const std::string& eventName) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return draw(perType_[eventName], kPerType, eventName);
}

void StoredSequenceNumbers::handBack() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (store_.hasFailed()) return;
    store_.checkInPlace();
    StoreFile::Statement handBack(store_, "UPDATE sequence_numbers SET next = ?2 WHERE sequence = ?1 AND next = ?3");
    const auto handBackRange = [&](const std::string& sequence, Range& range) {
        handBack.bind(1, sequence).bind(2, range.next).bind(3, range.end);
        handBack.run();
        range = {};
    };
    StoreFile::Transaction transaction(store_);
    handBackRange(kGlobal, global_);
    for (auto& [eventName, range] : perType_) handBackRange(kPerType + eventName, range);
    transaction.commit();
}

}  // namespace Velo::OS::Telemetry::replay
