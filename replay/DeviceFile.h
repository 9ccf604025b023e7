#pragma once

#include "replay/Device.h"
#include "replay/InputFile.h"

namespace Velo::OS::Telemetry::replay {

/// Reads the description of a device, one JSON object. Each member may be absent:
///
///     device_ids         {"telemetry": string, "morlek": string}
///     system_properties  {NAME: string}
///     users              {ANDROID_USER: {"managed_mode": integer, "account_mode": bool}}
///     identities         {UID: string}
///     packages           {PACKAGE: {UID: {"version_name": string, "version_code": integer}}}
///     foreground         {"package": string, "version_name": string}
///     sessions           {"attach_to_all_events": bool, "legacy": {ANDROID_USER: any value},
///                         "v2": [{"since_ms": integer, "context": string}]}
///     app_overrides      {UID: {APP_ID: {"id": string, "sdk_app_package_version_name": string,
///                         "sdk_app_package_version_code": integer}}}
///     clock              {"adjusted": bool, "time_ms": integer, "boot_time_ms": integer}
///
/// Throws `FileError` with the path of the member that is wrong, "FILE: identities.10123: expected a string".
Device readDevice(InputFile& file);

}  // namespace Velo::OS::Telemetry::replay
