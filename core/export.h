// Marks a definition as part of the exported C interface. Everything else is hidden.
#pragma once

#define VRN_EXPORT extern "C" __attribute__((visibility("default")))
