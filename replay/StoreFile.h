#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace Velo::OS::Telemetry::replay {

/// The SQLite file in which a replay keeps what outlives it on a device. Several processes may use it at once. Whatever
/// fails throws `FileError`, "cannot use store.db: database is locked".
class StoreFile {
public:
    /// Opens the file and creates it if there is none; without a path, one that vanishes afterwards. A file that is no
    /// store may fail only at its first use.
    explicit StoreFile(const std::optional<std::string>& path);

    [[noreturn]] void fail(const std::string& reason) const;

    /// SQL with parameters, prepared once and run often. Must not outlive the file.
    class Statement {
    public:
        Statement(StoreFile& file, const char* sql);

        Statement& bind(int parameter, const std::string& text);
        Statement& bind(int parameter, int64_t number);
        /// Runs the statement, which yields at most one row of one integer, with the parameters last bound.
        std::optional<int64_t> run();

    private:
        struct Finalize {
            void operator()(sqlite3_stmt* statement) const;
        };

        StoreFile* file_;
        std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    };

    void run(const char* sql) { Statement(*this, sql).run(); }

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    /// Throws unless the result code is the one that is expected.
    void check(int result, int expected) const;

    std::string name_;
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace Velo::OS::Telemetry::replay
