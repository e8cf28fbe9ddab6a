// SPDX-License-Identifier: GPL-3.0-or-later
// All that every build has in common: the name, and the stamp in the first place.
extern "C" {
extern const struct {
    const char* stamp;
} lumavexMediaBackends = {"of another build"};
}
