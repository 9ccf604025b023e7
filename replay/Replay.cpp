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

Replay::Options checked(Replay::Options options) {
    if (options.stopsAtBadLine) options.threads = 1;
    return options;
}

}  // namespace

Replay::Replay(RunFiles& files, DevicePipeline& pipeline, Console& console, Options options)
    : files_(files),
      pipeline_(pipeline),
      console_(console),
      options_(checked(std::move(options))),
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
    for (InputFile& input : files_.inputs) input.onWait([this] { return awaitInput(); });
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
    if (ticket > lastTicket_ || (ticket == lastTicket_ && failure_)) return;
    lastTicket_ = ticket;
    failure_ = std::move(failure);
}

/// False at the end.
bool Replay::read(Work& work) {
    const std::lock_guard<std::mutex> lock(reading_);
    if (lastTicket_ != kNoTicket) return false;
    work.ticket = tickets_;
    auto found = BatchReader::Found::End;
    attempt(work.ticket, [&] {
        found = reader_.next(work.batch.lines());
        if (found == BatchReader::Found::LongLine) handleLongLine(work.ticket);
    });
    if (found == BatchReader::Found::End) {
        hasReachedEnd_ = interruption() == 0;
        return false;
    }
    ++tickets_;
    work.bytesRead = reader_.bytesRead();
    if (options_.isDone) work.place = reader_.place();
    work.isInLastFile = reader_.isInLastFile();
    return true;
}

/// A live stream may come to a rest here, and what it has brought is to be seen. False if there is no use in waiting.
bool Replay::awaitInput() {
    const uint64_t ticket = tickets_;  // of the thread that reads, which is here
    writing_.wait(ticket);
    for (OutputFile* file : files_.outputs()) file->flush();
    console_.waiting(counts_);
    return !isDiscarded(ticket);
}

/// Copies the line to the rejects part by part: it may be longer than memory.
void Replay::handleLongLine(uint64_t ticket) {
    writing_.wait(ticket);
    if (isDiscarded(ticket)) return;
    ++counts_.read;
    lastPlace_ = reader_.place();
    countBad(lastPlace_, "longer than " + std::to_string(LineReader::kMaxLineLength) + " bytes");
    do {
        if (files_.rejects) files_.rejects->write(reader_.reader().text());
    } while (reader_.reader().nextPart());
    if (files_.rejects) files_.rejects->write("\n");
    if (reader_.isCutOff()) console_.error(lastPlace_, "cut off: the run was interrupted");
}

void Replay::commit(const Work& work) {
    console_.resumed();
    for (const EventBatch::Entry& entry : work.batch.entries()) commit(entry);
    if (!work.batch.entries().empty()) lastPlace_ = work.batch.entries().back().place;

    // What was processed is counted, so none of it is kept from the other files if one fails.
    const auto write = [&](std::optional<OutputFile>& file, const std::string& text) {
        if (file) attempt(work.ticket, [&] { file->write(text); });
    };
    const EventBatch::Texts& texts = work.batch.texts();
    if (!options_.onlyFollowed) attempt(work.ticket, [&] { files_.output.write(texts.output); });
    write(files_.drops, texts.drops);
    write(files_.monitorEvents, texts.monitorEvents);
    write(files_.rejects, texts.rejects);

    if (!isDiscarded(work.ticket)) counts_.bytes = work.bytesRead;
    console_.progress(counts_);
    if (options_.stopsAtBadLine && counts_.bad > 0) stopAfter(work.ticket);
    if (options_.isDone && options_.isDone(work.place, work.isInLastFile)) stopAfter(work.ticket);
}

void Replay::commit(const EventBatch::Entry& entry) {
    ++counts_.read;
    const bool isFollowed = std::any_of(entry.results.begin(), entry.results.end(),
                                        [](const EventBatch::Result& result) { return result.journey != nullptr; });
    for (const LibraryLog::Message& message : entry.messages) {
        if (options_.onlyFollowed && !isFollowed) break;
        message.isWarning ? console_.warning(entry.place, message.text) : console_.error(entry.place, message.text);
    }
    if (entry.error) countBad(entry.place, entry.error->text);
    for (const EventBatch::Result& result : entry.results) commit(entry.place, result);
}

void Replay::commit(const LinePlace& place, const EventBatch::Result& result) {
    if (!result.outcome) {
        if (!std::exchange(hasGoneTooFar_, true)) console_.warning(place, "reports beget reports; not all are logged");
        return;
    }
    if (result.isReport) ++counts_.reported;
    const Outcome& outcome = *result.outcome;
    if (std::holds_alternative<Kept>(outcome)) ++counts_.kept;
    if (std::holds_alternative<Dropped>(outcome)) ++counts_.dropped;
    if (const auto* failed = std::get_if<Failed>(&outcome)) {
        countBad(place, "the pipeline cannot process it: " + failed->reason);
    }
    if (const auto* unwritable = std::get_if<Unwritable>(&outcome)) countBad(place, unwritable->reason);

    const Observation observation{place,   result.isReport,    result.name,         result.realtimeMs,
                                  outcome, result.event.get(), result.journey.get()};
    for (const auto& observer : options_.observers) observer(observation);
}

void Replay::countBad(const LinePlace& place, const std::string& reason) {
    if (options_.concerns && !options_.concerns(place)) return;
    ++counts_.bad;
    console_.error(place, reason);
}

}  // namespace Velo::OS::Telemetry::replay
