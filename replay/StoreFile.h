#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Velo::OS::Telemetry::replay {

/// The SQLite file in which a replay keeps what outlives it on a device, with a write-ahead log beside it. Several
/// processes may use it at once. Whatever fails throws `FileError`, "cannot use store.db: database is locked"; so does
/// opening a store that is damaged, or a database of something else, whose contents are left as they are.
class StoreFile {
public:
    /// Opens the file and creates it if there is none; without a path, one that vanishes afterwards.
    explicit StoreFile(const std::optional<std::string>& path);

    /// Creates one of the tables, unless it exists. A store holds nothing else.
    void createTable(const char* definition);
    static constexpr char kSequenceNumbers[] = "sequence_numbers(sequence TEXT PRIMARY KEY, next INTEGER NOT NULL)";
    static constexpr char kKeyValues[] =
        "key_values(kind INTEGER, store TEXT, key TEXT, value TEXT NOT NULL, PRIMARY KEY(kind, store, key))"
        " WITHOUT ROWID";

    [[noreturn]] void fail(const std::string& reason);
    /// Whether it has: to try again could take long and say the same.
    bool hasFailed() const { return hasFailed_; }
    /// Fails if the file no longer is what its path names: who opens that next knows nothing of what is in here.
    void checkInPlace();

    /// SQL with parameters, prepared once and run often. Must not outlive the file.
    class Statement {
    public:
        Statement(StoreFile& file, const char* sql);

        Statement& bind(int parameter, const std::string& text);
        Statement& bind(int parameter, int64_t number);
        /// Runs the statement, which yields at most one row of one integer, with the parameters last bound.
        std::optional<int64_t> run();
        /// The same for a statement that yields any number of rows of one text.
        std::vector<std::string> texts();

    private:
        template <typename Take>
        void eachRow(Take take);

        struct Finalize {
            void operator()(sqlite3_stmt* statement) const;
        };

        StoreFile* file_;
        std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    };

    /// What is written while it lives, by whatever statement of the file, is kept as a whole by `commit`, or not at
    /// all. Keeps other processes from writing.
    class Transaction {
    public:
        explicit Transaction(StoreFile& file) : file_(file) { file.run("BEGIN IMMEDIATE"); }
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        ~Transaction();

        void commit();

    private:
        StoreFile& file_;
        bool isOpen_ = true;
    };

    void run(const char* sql) { Statement(*this, sql).run(); }

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    void distrustContents();
    void checkContents();
    /// Throws unless the result code is the one that is expected.
    void check(int result, int expected);

    std::string name_;
    bool hasFailed_ = false;
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace Velo::OS::Telemetry::replay
