#pragma once

namespace fault::exchange {

// What the Z of an exchange file measures. Readers of formats that do not say (Charisma,
// OpendTect) leave it Unknown. Writers of formats that carry a Z unit write "ms" for Time
// and "m" for Depth; for Unknown, GOCAD writes "m" (its unit is mandatory) and IESX leaves
// the unit out. Z values are written unchanged whatever the domain.
enum class VerticalDomain { Unknown, Time, Depth };

} // namespace fault::exchange
