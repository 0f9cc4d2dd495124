// Lets a long answer leave while its rest is still being made.
#pragma once

#include "cimhost/byte_buffer.h"

#include <algorithm>
#include <cstddef>

namespace cimhost {

/// Takes the pieces of an answer before its end is made.
class Outlet {
public:
    virtual ~Outlet() = default;

    /// Takes the bytes of the document. False if the client wants the answer whole; then the document stays as it is.
    /// Throws std::exception if nobody waits for the answer any more.
    virtual bool take(ByteBuffer& document) = 0;
};

/// The document of one answer. After each object, the document goes to the outlet if it is long enough for a piece.
class AnswerPieces {
public:
    static constexpr std::size_t pieceSize = std::size_t{64} << 10;
    // Room for an object or two more than a piece, so that the buffer does not grow.
    static constexpr std::size_t pieceRoom = pieceSize + pieceSize / 4;

    /// The document is empty and outlives this.
    /// @param most the most bytes of all pieces together
    /// @param expected the likely length of an answer that stays whole
    /// @param way null: the answer stays whole
    AnswerPieces(ByteBuffer& target, std::size_t most, std::size_t expected, Outlet* way)
        : document(target), left(most), wholeSize(std::min(expected, most)), outlet(way) {
        document = ByteBuffer(most);
        document.reserve(std::min(wholeSize, pieceRoom));
    }

    /// Called after each object. Throws as Outlet::take().
    void objectDone() {
        if (outlet && document.size() >= pieceSize) pass();
    }

    /// True once a piece has left.
    [[nodiscard]] bool hasBegun() const noexcept { return isUnderWay; }

private:
    void pass() {
        const std::size_t size = document.size();
        if (!outlet->take(document)) {
            outlet = nullptr;
            return document.reserve(wholeSize);
        }
        isUnderWay = true;
        left -= size;
        document = ByteBuffer(left);
        document.reserve(std::min(left, pieceRoom));
    }

    ByteBuffer& document;
    std::size_t left;
    const std::size_t wholeSize;
    Outlet* outlet;
    bool isUnderWay = false;
};

} // namespace cimhost
