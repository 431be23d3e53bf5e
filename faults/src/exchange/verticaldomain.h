#pragma once

namespace fault::exchange {

// What the Z of an exchange file measures. Formats that do not say leave it Unknown;
// writers of formats that carry a unit write milliseconds for Time and metres for Depth
// and Unknown alike (metres), since the numbers are written unchanged either way.
enum class VerticalDomain { Unknown, Time, Depth };

} // namespace fault::exchange
