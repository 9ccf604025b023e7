#pragma once

#include <json/value.h>
#include <json/writer.h>

#include <memory>
#include <sstream>
#include <string>

#include "telemetry/JsonToBundle.h"

namespace Velo::OS::Telemetry::benchmarks {

/// Data of an ordinary event: twelve members, a nested object and an array among them.
inline Json::Value sampleData() {
    Json::Value data;
    getJsonFromString(R"({"build":"v51.3.217","extra":{"k1":17,"k2":"omega","k3":[4,8,1]},"flags":9437251,"fps":71.98,
        "note":"sigma \"tau\" upsilon phi","ok":true,"seq":41172,"session_id":"0f6d3c1be2a94d57b8e1c0a2f4d69b73",
        "tags":["beta","wifi"],"utl_app_id":23,"utl_logging_package":"com.example.shell","utl_realtime_ms":8452311})",
                      data);
    return data;
}

/// The floor of writing: jsoncpp alone, its writer and stream kept.
class ReusedWriter {
public:
    ReusedWriter() {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        writer_.reset(builder.newStreamWriter());
    }

    std::string write(const Json::Value& value) {
        stream_.str(std::string());
        writer_->write(value, &stream_);
        return stream_.str();
    }

private:
    std::ostringstream stream_;
    std::unique_ptr<Json::StreamWriter> writer_;
};

}  // namespace Velo::OS::Telemetry::benchmarks
