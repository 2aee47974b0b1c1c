// SPDX-License-Identifier: GPL-2.0-or-later
// Samplers of the board's load.
#pragma once

struct vty;

extern "C" {

// Busy share of all processors over the next 50 ms, in per cent with one decimal; the caller waits that long.
// The session is not used.  0, or -1 with the result untouched when /proc/stat cannot be read.
int get_cpu_usage(struct vty *vty, float *percent) noexcept;

// Share of the memory that is not free, in per cent; page cache counts as used.  Always 0: what cannot be
// read counts as 0, and without a total the result is not a number.
int system_memory_usage_get(float *percent) noexcept;
}
