// What the component exports: C names only, default visibility; everything else is hidden.
#pragma once

#define KLL_EXPORT extern "C" __attribute__((visibility("default")))
