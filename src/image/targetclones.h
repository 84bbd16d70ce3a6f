#pragma once

/// Compiles a function for several instruction sets, the fitting one chosen at run time. The thread
/// sanitizer's start-up does not survive that choice.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) &&                 \
    !defined(__SANITIZE_THREAD__)
#define TIRN_TARGET_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define TIRN_TARGET_CLONES
#endif

/// Loops shared by clones must land inside them to be compiled for their instruction set.
#define TIRN_INLINE [[gnu::always_inline]] inline
/// The same for a lambda, between its parameters and its body.
#define TIRN_INLINED_LAMBDA __attribute__((always_inline))
