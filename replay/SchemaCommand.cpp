#include "replay/SchemaCommand.h"

#include <cstring>

#include "replay/ConsentFilter.h"
#include "replay/Console.h"
#include "replay/Escape.h"
#include "replay/LibraryLog.h"
#include "replay/OutputFile.h"
#include "replay/SchemaCheck.h"
#include "replay/SchemaFile.h"
#include "replay/StoredKeyValues.h"
#include "telemetry/EventSchemaHandler.h"

namespace Velo::OS::Telemetry::replay {

namespace {

std::string onlyPurposeOf(EventSchemaHandler& schema, const std::string& name) {
    if (schema.isPersonalizationPurposeOnly(name)) return EventSchemaHandler::kPurposePersonalization;
    if (schema.isAdsPersonalizationPurposeOnly(name)) return EventSchemaHandler::kPurposeAdsPersonalization;
    return "none";
}

std::string describe(EventSchemaHandler& schema, const std::string& name) {
    const auto category = schema.getEventCategory(name);
    const auto row = [](const char* title, const std::string& value) {
        return "  " + std::string(title) + std::string(24 - std::strlen(title), ' ') + value + "\n";
    };
    const auto isKeptWith = [&](Consent consent) { return isKept(category, consent) ? "yes" : "no"; };
    const std::string hash = schema.getHashedEventName(name);
    return escaped(name) + "\n" + row("hash", hash == name ? "none, for want of a salt" : hash) +
           row("category", EventSchemaHandler::getEventCategoryStr(category)) +
           row("only purpose", onlyPurposeOf(schema, name)) + row("kept with consent", isKeptWith({true, true})) +
           row("kept without consent", isKeptWith({false, false}));
}

/// Runs the command and says which file it could not use, if any.
template <typename Command>
ExitStatus run(Console& console, Command command) {
    ExitStatus status = ExitStatus::Unusable;
    const bool isUsable = console.attempt([&] {
        OutputFile output("-");
        status = command(output);
        output.close();
    });
    return isUsable ? status : ExitStatus::Unusable;
}

}  // namespace

ExitStatus checkSchemaCommand(const std::string& file) {
    Console console(/*quiet=*/false);
    return run(console, [&](OutputFile& output) {
        InputFile input(file);
        const SchemaReport report = checkSchema(readSchema(input));
        for (const SchemaReport::Problem& problem : report.problems) {
            console.error({input.name(), problem.line}, problem.text);
        }
        const uint64_t others = report.problemCount - report.problems.size();
        if (others > 0) console.error("and " + std::to_string(others) + " more");
        output.write(toTable(report.entriesByCategory) + toTable({{"problems", report.problemCount}}));
        return report.problems.empty() ? ExitStatus::Success : ExitStatus::BadInput;
    });
}

ExitStatus lookUpSchemaCommand(const std::string& file, const std::vector<std::string>& names) {
    Console console(/*quiet=*/false);
    const LibraryLog libraryLog(console);
    return run(console, [&](OutputFile& output) {
        InputFile input(file);
        StoreFile store(std::nullopt);
        EventSchemaHandler schema(std::make_shared<StoredKeyValues>(store));
        persistSchema(readSchema(input), input.name(), schema, store);
        for (const std::string& name : names) output.write(describe(schema, name));
        return ExitStatus::Success;
    });
}

}  // namespace Velo::OS::Telemetry::replay
