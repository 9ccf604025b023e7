#include "replay/Replay.h"

#include <algorithm>
#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "replay/Interruption.h"

namespace Velo::OS::Telemetry::replay {

namespace {

/// Long enough for turns to cost little, short enough for the events of all threads to fit a cache.
constexpr size_t kBatchLines = 64;

Replay::Options withOneThreadIfStrict(Replay::Options options) {
    if (options.stopsAtBadLine) options.threads = 1;
    return options;
}

}  // namespace

Replay::Replay(RunFiles& files, DevicePipeline& pipeline, Console& console, Options options)
    : files_(files),
      pipeline_(pipeline),
      console_(console),
      options_(withOneThreadIfStrict(std::move(options))),
      reader_(files.inputs, options_.threads > 1 ? kBatchLines : 1) {}

EventBatch::Wishes Replay::wishes() const {
    EventBatch::Wishes wishes;
    wishes.drops = files_.drops.has_value();
    wishes.monitorEvents = files_.monitorEvents.has_value();
    wishes.rejects = files_.rejects.has_value();
    wishes.observations = !options_.observers.empty();
    wishes.explanations = wishes.drops || wishes.observations;
    return wishes;
}

void Replay::run() {
    for (InputFile& input : files_.inputs) input.onWait([this]() TELEMETRY_REQUIRES(reading_) { return awaitInput(); });
    // Even what fails before the first batch must not leave a thread behind.
    const auto work = [this] { attempt(0, [this] { this->work(); }); };
    std::vector<std::thread> others;
    try {
        for (unsigned i = 1; i < options_.threads; ++i) others.emplace_back(work);
    } catch (const std::exception&) {
        // The machine has no more threads to give: those that there are do all the work.
    }
    work();
    for (std::thread& thread : others) thread.join();
    const std::lock_guard<std::mutex> lock(stopping_);
    if (failure_) std::rethrow_exception(failure_);
}

void Replay::work() {
    Work work(wishes());
    while (read(work)) {
        attempt(work.ticket, [&] { work.batch.decode(); });
        {
            const Turn turn(processing_, work.ticket);
            if (isDiscarded(work.ticket)) work.batch.discard();
            attempt(work.ticket, [&] { work.batch.process(pipeline_, options_.follow); });
        }
        attempt(work.ticket, [&] { work.batch.write(); });
        const Turn turn(writing_, work.ticket);
        attempt(work.ticket, [&] { commit(work); });
    }
}

/// A failure ends the run, once the batches before it are done.
template <typename Step>
void Replay::attempt(uint64_t ticket, Step step) {
    try {
        step();
    } catch (...) {
        stopAfter(ticket, std::current_exception());
    }
}

void Replay::stopAfter(uint64_t ticket, std::exception_ptr failure) {
    const std::lock_guard<std::mutex> lock(stopping_);
    lastTicket_ = std::min(lastTicket_.load(), ticket);
    if (!failure_) failure_ = std::move(failure);
}

/// Closing the file says what has failed.
void Replay::stopIfAnOutputFailed(uint64_t ticket) {
    if (files_.hasFailedOutput()) stopAfter(ticket);
}

/// False at the end.
bool Replay::read(Work& work) {
    const std::lock_guard<std::mutex> lock(reading_);
    if (lastTicket_ != kNoTicket) return false;
    work.ticket = tickets_;
    auto found = BatchReader::Found::End;
    try {
        found = reader_.next(work.batch.lines());
        if (found == BatchReader::Found::LongLine) handleLongLine(work.ticket);
        if (found != BatchReader::Found::End && options_.isDone) work.place = reader_.place();
    } catch (...) {
        stopAfter(work.ticket, std::current_exception());
    }
    if (found == BatchReader::Found::End) {
        hasReachedEnd_ = interruption() == 0;
        return false;
    }
    work.bytesRead = reader_.bytesRead();
    work.isInLastFile = reader_.isInLastFile();
    ++tickets_;  // from here on nothing may keep it from its turns
    return true;
}

/// A live stream may come to a rest here, and what it has brought is to be seen. False if there is no use in waiting.
bool Replay::awaitInput() {
    const uint64_t ticket = tickets_;  // of the thread that reads, which is here
    writing_.wait(ticket);
    for (OutputFile* file : files_.outputs()) file->flush();
    stopIfAnOutputFailed(ticket);
    console_.waiting(counts_);
    return lastTicket_ == kNoTicket;
}

/// Copies the line to the rejects part by part: it may be longer than memory.
void Replay::handleLongLine(uint64_t ticket) {
    writing_.wait(ticket);
    if (isDiscarded(ticket)) return;
    const LinePlace place = reader_.place();
    ++counts_.read;
    countBad(place);
    sayBad(place, "longer than " + std::to_string(LineReader::kMaxLineLength) + " bytes");
    do {
        if (files_.rejects) files_.rejects->write(reader_.reader().text());
    } while (!files_.hasFailedOutput() && reader_.reader().nextPart());
    if (files_.rejects) files_.rejects->write("\n");
    stopIfAnOutputFailed(ticket);
    if (!reader_.isCutOff()) {
        lastPlace_ = place;
    } else if (interruption() != 0) {
        console_.error(place, "cut off: the run was interrupted");
    }
}

void Replay::commit(const Work& work) {
    console_.resumed();
    // What was processed is counted and written, even if there is no memory to speak of it.
    for (const EventBatch::Entry& entry : work.batch.entries()) count(entry);
    for (const EventBatch::Entry& entry : work.batch.entries()) attempt(work.ticket, [&] { show(entry); });
    const EventBatch::Texts& texts = work.batch.texts();
    if (!options_.onlyFollowed) files_.output.write(texts.output);
    if (files_.drops) files_.drops->write(texts.drops);
    if (files_.monitorEvents) files_.monitorEvents->write(texts.monitorEvents);
    if (files_.rejects) files_.rejects->write(texts.rejects);
    stopIfAnOutputFailed(work.ticket);

    if (!work.batch.entries().empty()) lastPlace_ = work.batch.entries().back().place;
    if (!isDiscarded(work.ticket)) counts_.bytes = work.bytesRead;
    console_.progress(counts_);
    if (options_.stopsAtBadLine && counts_.bad > 0) stopAfter(work.ticket);
    if (options_.isDone && options_.isDone(work.place, work.isInLastFile)) stopAfter(work.ticket);
}

void Replay::count(const EventBatch::Entry& entry) {
    ++counts_.read;
    if (entry.error) countBad(entry.place);
    for (const EventBatch::Result& result : entry.results) {
        if (!result.outcome) continue;
        if (result.isReport) ++counts_.reported;
        if (std::holds_alternative<Kept>(*result.outcome)) {
            ++counts_.kept;
        } else if (std::holds_alternative<Dropped>(*result.outcome)) {
            ++counts_.dropped;
        } else {
            countBad(entry.place);
        }
    }
}

void Replay::countBad(const LinePlace& place) {
    if (concerns(place)) ++counts_.bad;
}

void Replay::show(const EventBatch::Entry& entry) {
    const bool isFollowed = std::any_of(entry.results.begin(), entry.results.end(),
                                        [](const EventBatch::Result& result) { return result.journey != nullptr; });
    for (const LibraryLog::Message& message : entry.messages) {
        if (options_.onlyFollowed && !isFollowed) break;
        message.isWarning ? console_.warning(entry.place, message.text) : console_.error(entry.place, message.text);
    }
    if (entry.error) sayBad(entry.place, entry.error->text);
    for (const EventBatch::Result& result : entry.results) show(entry.place, result);
}

void Replay::show(const LinePlace& place, const EventBatch::Result& result) {
    if (!result.outcome) {
        if (!std::exchange(hasGoneTooFar_, true)) console_.warning(place, "reports beget reports; not all are logged");
        return;
    }
    const Outcome& outcome = *result.outcome;
    if (const auto* failed = std::get_if<Failed>(&outcome)) {
        sayBad(place, "the pipeline cannot process it: " + failed->reason);
    }
    if (const auto* unwritable = std::get_if<Unwritable>(&outcome)) sayBad(place, unwritable->reason);

    const Observation observation{place,   result.isReport,    result.name,         result.realtimeMs,
                                  outcome, result.event.get(), result.journey.get()};
    for (const auto& observer : options_.observers) observer(observation);
}

bool Replay::concerns(const LinePlace& place) const { return !options_.concerns || options_.concerns(place); }

void Replay::sayBad(const LinePlace& place, const std::string& reason) {
    if (concerns(place)) console_.error(place, reason);
}

}  // namespace Velo::OS::Telemetry::replay
