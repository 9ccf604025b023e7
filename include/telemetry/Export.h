#pragma once

/// Marks what the shared library exports; everything else is hidden.
#define TELEMETRY_EXPORT [[gnu::visibility("default")]]
