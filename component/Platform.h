#pragma once

namespace palvex::component {

/// Gives the engine this platform's ways: numeric texts by the user's regional settings, messages
/// in a message box. To be called before the first object is made.
void installPlatform();

}  // namespace palvex::component
