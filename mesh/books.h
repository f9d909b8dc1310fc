#pragma once

#include <span>
#include <utility>
#include <vector>

#include "mesh/book_side.h"
#include "mesh/edge_table.h"

namespace marrowfen {

// Edges with so many faces that a face that is used isn't told to each one across: the books of a group. Its pages,
// the faces that are on no other such edge and have none of the same corners across, are adjacent to all that is
// across, which is counted once for all of them.
class Books {
public:
    // The faces and the table must outlive this.
    Books(StripFaces& faces, EdgeTable& edges) : faces_(faces), edges_(edges) {}

    // Finds the books of the linked group: takes the pages out of its lists and their neighbours across out of their
    // counts.
    void startGroup();

    // All free faces adjacent to the face.
    int32_t freeNeighbors(uint32_t face) const {
        const int32_t count = faces_.freeNeighbors(face);
        return areNone_ ? count : count + across_[faces_[face].book];
    }

    // A face adjacent to this free one was used, which wasn't counted for all pages.
    void dropNeighbor(uint32_t face) {
        assert(freeNeighbors(face) > 0);
        int32_t& count = faces_.freeNeighbors(face);
        if (isPage(face)) sides_[faces_[face].book].move(face, count, count - 1);
        --count;
    }

    void use(uint32_t face) {
        const int32_t count = faces_.freeNeighbors(face);
        if (isPage(face)) sides_[faces_[face].book].remove(face, count);
        faces_.use(face);
        edges_.copies().passOn(face, count);
    }

    // The face across a list was used. Gives the page with the fewest free neighbours that stood in the list, the
    // lowest among equals, kNone for none; never its twin, which isn't its neighbour.
    int32_t dropNeighborOfPages(uint32_t used, int32_t list) {
        const uint32_t book = areNone_ ? 0 : bookOfList_[EdgeTable::listNumber(list)];
        if (book == 0) return HalfEdge::kNone;
        --across_[book];
        BookSide& side = sides_[book];
        const uint32_t twin = twinOf_[used];
        if (twin == kNoTwin || !faces_.isFree(twin)) return side.withFewest();
        int32_t& count = faces_.freeNeighbors(twin);
        const uint32_t position = side.remove(twin, count);
        const int32_t best = side.withFewest();
        side.insert(position, ++count);
        return best;
    }

    // Calls visit(face) for one free page of each side of a book: that with the most free neighbours, the lowest among
    // equals.
    template <class Visit>
    void visitBestPages(Visit visit) const {
        for (size_t book = 1; book < sides_.size(); ++book) {
            const int32_t page = sides_[book].withMost();
            if (page != HalfEdge::kNone) visit(HalfEdge::face(page));
        }
    }

    bool isPage(uint32_t face) const { return !areNone_ && faces_[face].book != 0; }

    // Is it a page of a book on whose edge the vertex lies?
    bool isPageAt(uint32_t face, uint32_t vertex) const {
        const auto& [from, to] = ends_[faces_[face].book];
        return isPage(face) && (from == vertex || to == vertex);
    }

private:
    static constexpr uint32_t kNoTwin = UINT32_MAX;
    static constexpr size_t kFewPairs = 4096;  // of faces across an edge: they are told one by one

    void makeBook(int32_t there, int32_t back, const std::vector<bool>& isOnMore);
    using Thirds = std::vector<uint32_t>;  // third corners of the faces of a list, ascending

    // A page that has a twin, by third corner.
    using Twin = std::pair<uint32_t, uint32_t>;

    void makeSide(int32_t list, const Thirds& thirds, const Thirds& thirdsAcross, const std::vector<bool>& isOnMore,
                  std::vector<Twin>& twins);
    Thirds thirdsOf(int32_t list) const;

    StripFaces& faces_;
    EdgeTable& edges_;
    bool areNone_ = true;
    // By StripFace::book, 0 for no book.
    std::vector<BookSide> sides_ = std::vector<BookSide>(1);
    std::vector<int32_t> across_{0};  // free faces across, to all of which each page is adjacent
    std::vector<std::pair<uint32_t, uint32_t>> ends_{{0, 0}};  // of the edge
    std::vector<uint32_t> bookOfList_;                         // by list number; 0 for none
    std::vector<uint32_t> twinOf_;  // per face: the page with the same corners the other way round
};

}  // namespace marrowfen
