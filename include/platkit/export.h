/* Marks what libplatkit shows to the outside; everything else in it is hidden. */
#ifndef PLATKIT_EXPORT_H
#define PLATKIT_EXPORT_H

#if defined(__GNUC__)
#define PLATKIT_EXPORT __attribute__((visibility("default")))
#else
#define PLATKIT_EXPORT
#endif

/* An operation whose status must be looked at. */
#if defined(__cplusplus)
#define PLATKIT_NODISCARD [[nodiscard]]
#else
#define PLATKIT_NODISCARD
#endif

#endif /* PLATKIT_EXPORT_H */
