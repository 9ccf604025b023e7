#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace Velo::OS::Telemetry::replay {

/// The SQLite file in which a replay keeps what outlives it on a device. Several processes may use it at once. Whatever
/// fails throws `FileError`, "cannot use store.db: database is locked".
class StoreFile {
public:
    /// An empty path stands for a file that vanishes afterwards. A file that is no store fails at its first use, which
    /// also creates it if there is none.
    explicit StoreFile(const std::string& path);

    /// SQL with parameters, prepared once and run often. Must not outlive the file.
    class Statement {
    public:
        Statement(StoreFile& file, const char* sql);

        Statement& bind(int parameter, const std::string& text);
        Statement& bind(int parameter, int64_t number);
        /// Runs the statement, which yields at most one row, with the parameters last bound. The first column of the
        /// row; 0 without one.
        int64_t run();

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

    std::string path_;
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace Velo::OS::Telemetry::replay
