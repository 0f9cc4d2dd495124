// A long answer on its way while its rest is still being made.
#pragma once

#include "cimhost/byte_buffer.h"

#include <algorithm>
#include <cstddef>

namespace cimhost {

/// Takes the beginning of an answer before there is an end.
class Outlet {
public:
    virtual ~Outlet() = default;

    /// Takes the bytes of the document, or leaves it as it is where the client wants the answer whole: false. Throws
    /// where nobody waits for the answer any more.
    virtual bool take(ByteBuffer& document) = 0;
};

/// The document of one answer. What is behind the last object is passed on whenever it is a piece.
class AnswerPieces {
public:
    static constexpr std::size_t pieceSize = std::size_t{64} << 10;
    // An object or two more than a piece: then the buffer does not grow.
    static constexpr std::size_t pieceRoom = pieceSize + pieceSize / 4;

    /// The document outlives this and is empty; all pieces together have at most that many bytes. Without an outlet, or
    /// with one that takes nothing, the answer is whole, and expected to be as long as said.
    AnswerPieces(ByteBuffer& target, std::size_t most, std::size_t expected, Outlet* way)
        : document(target), left(most), wholeSize(std::min(expected, most)), outlet(way) {
        document = ByteBuffer(most);
        document.reserve(std::min(wholeSize, pieceRoom));
    }

    /// Behind each object.
    void objectDone() {
        if (outlet && document.size() >= pieceSize) pass();
    }

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
