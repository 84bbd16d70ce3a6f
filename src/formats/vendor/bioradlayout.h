#pragma once

#include <cstdint>

/// The layout of a Bio-Rad PIC file, shared by its reader and its writer.
namespace tirn::biorad {

constexpr std::int64_t kHeaderBytes = 76;
constexpr int kNotesOffset = 10;
constexpr int kByteFormatOffset = 14;
constexpr int kSignatureOffset = 54;
constexpr int kSignature = 12345;
constexpr int kLensOffset = 64;
/// An unsigned integer here, although other programs store a float.
constexpr int kMagnificationOffset = 66;

constexpr int kNoteBytes = 96;
constexpr int kNoteTextOffset = 16;
constexpr int kNoteTextBytes = 80;
/// Notes of a type above this one carry a message or an axis.
constexpr int kLastPlainNoteType = 19;
constexpr int kAxisNoteType = 20;

/// The largest size that the header's 16-bit fields hold.
constexpr int kLargestSize = 65535;

} // namespace tirn::biorad
