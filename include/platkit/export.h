/* PLATKIT_EXPORT marks the symbols that libplatkit exports; all others are hidden. */
#ifndef PLATKIT_EXPORT_H
#define PLATKIT_EXPORT_H

#if defined(__GNUC__)
#define PLATKIT_EXPORT __attribute__((visibility("default")))
#else
#define PLATKIT_EXPORT
#endif

/* Marks an operation whose status the caller must check. */
#if defined(__cplusplus)
#define PLATKIT_NODISCARD [[nodiscard]]
#else
#define PLATKIT_NODISCARD
#endif

#endif /* PLATKIT_EXPORT_H */
