#include "replay/StoreFile.h"

#include <sqlite3.h>

#include "replay/FileError.h"

namespace Velo::OS::Telemetry::replay {

namespace {

constexpr int kPatienceMs = 10'000;  // with another process that writes

// A salt, or an identifier with its purpose, may be all of a schema, which has at most 64 MiB.
constexpr int kMaxRowBytes = 65 << 20;

/// The path as SQLite is to see it: a relative one could pass for a URI or for ":memory:".
std::string plainPath(const std::optional<std::string>& path) {
    if (!path) return {};
    return path->starts_with('/') ? *path : "./" + *path;
}

}  // namespace

void StoreFile::Close::operator()(sqlite3* database) const { sqlite3_close_v2(database); }

StoreFile::StoreFile(const std::optional<std::string>& path) : name_(path.value_or("a temporary store")) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(plainPath(path).c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                                       /*zVfs=*/nullptr);
    database_.reset(database);
    check(result, SQLITE_OK);
    check(sqlite3_busy_timeout(database, kPatienceMs), SQLITE_OK);
    distrustContents();
    if (path) checkContents();
    // Readers need not wait for a writer. A file that vanishes has none, and says so.
    Statement(*this, "PRAGMA journal_mode = WAL").texts();
}

void StoreFile::fail(const std::string& reason) {
    hasFailed_ = true;
    throw FileError("cannot use " + name_ + ": " + reason);
}

/// Whoever made the file may have put into it what takes for ever, or all memory.
void StoreFile::distrustContents() {
    const auto configure = [&](int option, int value) {
        check(sqlite3_db_config(database_.get(), option, value, static_cast<int*>(nullptr)), SQLITE_OK);
    };
    configure(SQLITE_DBCONFIG_ENABLE_TRIGGER, 0);
    configure(SQLITE_DBCONFIG_ENABLE_VIEW, 0);
    configure(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0);
    configure(SQLITE_DBCONFIG_DEFENSIVE, 1);
    sqlite3_limit(database_.get(), SQLITE_LIMIT_LENGTH, kMaxRowBytes);
}

/// Before anything is written. A table with the right name could still compute in its constraints, which are part of
/// the text that made it. A damaged index could bring a number into circulation twice.
void StoreFile::checkContents() {
    // The index that comes with a table has no text.
    Statement others(
        *this, "SELECT count(*) FROM sqlite_master WHERE sql NOT IN ('CREATE TABLE ' || ?1, 'CREATE TABLE ' || ?2)");
    if (others.bind(1, kSequenceNumbers).bind(2, kKeyValues).run() != 0) {
        fail("it is no store but the database of something else");
    }
    const std::vector<std::string> findings = Statement(*this, "PRAGMA integrity_check(1)").texts();
    if (findings != std::vector<std::string>{"ok"}) fail("it is damaged: " + findings.front());
}

void StoreFile::createTable(const char* definition) {
    run((std::string("CREATE TABLE IF NOT EXISTS ") + definition).c_str());
}

void StoreFile::checkInPlace() {
    int hasMoved = 0;
    sqlite3_file_control(database_.get(), /*zDbName=*/nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    if (hasMoved != 0) fail("it was moved or deleted meanwhile");
}

void StoreFile::check(int result, int expected) {
    if (result != expected) fail(sqlite3_errmsg(database_.get()));
}

void StoreFile::Statement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

StoreFile::Statement::Statement(StoreFile& file, const char* sql) : file_(&file) {
    sqlite3_stmt* statement = nullptr;
    file_->check(sqlite3_prepare_v2(file.database_.get(), sql, /*nByte=*/-1, &statement, /*pzTail=*/nullptr),
                 SQLITE_OK);
    statement_.reset(statement);
}

StoreFile::Statement& StoreFile::Statement::bind(int parameter, const std::string& text) {
    file_->check(
        sqlite3_bind_text64(statement_.get(), parameter, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8),
        SQLITE_OK);
    return *this;
}

StoreFile::Statement& StoreFile::Statement::bind(int parameter, int64_t number) {
    file_->check(sqlite3_bind_int64(statement_.get(), parameter, number), SQLITE_OK);
    return *this;
}

template <typename Take>
void StoreFile::Statement::eachRow(Take take) {
    int result = sqlite3_step(statement_.get());
    for (; result == SQLITE_ROW; result = sqlite3_step(statement_.get())) take(statement_.get());
    sqlite3_reset(statement_.get());  // repeats the failure of a step that failed
    file_->check(result, SQLITE_DONE);
}

std::optional<int64_t> StoreFile::Statement::run() {
    std::optional<int64_t> number;
    eachRow([&](sqlite3_stmt* row) { number = sqlite3_column_int64(row, 0); });
    return number;
}

std::vector<std::string> StoreFile::Statement::texts() {
    std::vector<std::string> texts;
    eachRow([&](sqlite3_stmt* row) {
        const bool isNull = sqlite3_column_type(row, 0) == SQLITE_NULL;
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(row, 0));
        if (!bytes && !isNull) file_->fail("out of memory");
        texts.emplace_back(bytes ? bytes : "", bytes ? static_cast<size_t>(sqlite3_column_bytes(row, 0)) : 0);
    });
    return texts;
}

StoreFile::Transaction::~Transaction() {
    if (isOpen_) sqlite3_exec(file_.database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void StoreFile::Transaction::commit() {
    file_.run("COMMIT");
    isOpen_ = false;
}

}  // namespace Velo::OS::Telemetry::replay
