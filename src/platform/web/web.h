#pragma once

#include <cstdint>
#include <span>

/// What a page needs of the browser beside the platform's interfaces.
namespace vento::platform {

/// Has the browser ask its user for a device of one of these vendors. False if nothing was chosen, also where
/// the browser does not ask. Suspends.
bool RequestDevices(std::span<const std::uint16_t> vendorIds);

/// Gives the event loop one turn, at full speed in a tab that nobody sees as well. Suspends.
void TakeTurn();

}  // namespace vento::platform
