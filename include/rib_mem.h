/** @file
 * Memory utilities: a bitmap over the caller's bytes, a buddy allocator of small index blocks, an allocator of
 * contiguous segments, a pool of fixed-size items. Every descriptor belongs to the caller until it is destroyed;
 * callers serialise access to it. Results are result codes (rib_codes.h) unless stated otherwise.
 */
#ifndef RIB_MEM_H
#define RIB_MEM_H

#include "rib_check.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bitmap: position p is bit p & 7, from the least significant, of byte p >> 3. Lengths are in bytes.
 *
 * The single-bit operations refuse a position only when its byte index is greater than the length: a position in the
 * byte just past the stated length is accepted and touched. Pass the last valid byte index, or keep a spare byte. */

/** Fills the map with zeros. @return 0 */
uint32_t bmap_init(uint8_t *map, uint32_t length);
/** Sets a bit. @return 0; RIB_BAD_PARAMETERS after a trace line where the position is refused */
uint32_t bmap_set(uint8_t *map, uint32_t length, uint32_t position);
/** Clears a bit. @return 0; RIB_BAD_PARAMETERS after a trace line where the position is refused */
uint32_t bmap_clr(uint8_t *map, uint32_t length, uint32_t position);
/** @return 1 if the bit is set, else 0; 0 after a trace line where the position is refused */
uint32_t bmap_is_set(const uint8_t *map, uint32_t length, uint32_t position);
/** @return 1 if the bit is clear, else 0; 1 after a trace line where the position is refused */
uint32_t bmap_is_clr(const uint8_t *map, uint32_t length, uint32_t position);
/** Finds the lowest set position at or after start. @return 0; RIB_FAILED with *position 0 where there is none */
uint32_t bmap_next_set(const uint8_t *map, uint32_t length, uint32_t start, uint32_t *position);
/** Finds the lowest clear position at or after start and sets it. @return 0; RIB_FAILED with *position 0 if none */
uint32_t bmap_next_clr(uint8_t *map, uint32_t length, uint32_t start, uint32_t *position);
/** @return the number of set bits */
uint32_t bmap_count(const uint8_t *map, uint32_t length);
/** @return 1 if the maps are equal, else 0 */
uint32_t bmap_is_same(const uint8_t *a, const uint8_t *b, uint32_t length);
/** Stores the members of a or b; out may be a or b. @return 0 */
uint32_t bmap_or(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);
/** Stores the bits that go from clear in a (old) to set in b (new); out may be a or b. @return 0 */
uint32_t bmap_to_set(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);
/** Stores the bits that go from set in a (old) to clear in b (new); out may be a or b. @return 0 */
uint32_t bmap_to_clr(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);
/** Prints the label in 15 columns and the bytes, 16 a line. */
void bmap_show(const uint8_t *map, uint32_t length, const char *label);

/* Buddy allocator: blocks of 1 to 16 consecutive units of a numbered space, which is carved from the bottom in chunks
 * of 16. A block never crosses a chunk's boundary; freed blocks merge inside their chunk; wholly free chunks at the top
 * go back to the uncarved space. */

#define BUD_SIZES 16                       /**< block sizes, and units in a chunk */
#define BUD_FREE_UNIT UINT32_C(0xdeadbeef) /**< a free unit of a table; the index of a failed allocation */
#define BUD_IMAGE_FIXED_SIZE UINT32_C(140) /**< bytes of an image before its block indices */

struct bud;

/** @return a descriptor of total_size uncarved units; null if memory fails */
struct bud *bud_create(uint32_t total_size);
/**
 * Rebuilds a fresh descriptor from a table with one word per unit: BUD_FREE_UNIT for a free unit, else a value that the
 * units of one block share. Prints what it finds.
 * @return 0; RIB_OUT_OF_MEMORY, with the blocks listed so far
 */
uint32_t bud_create_from_table(struct bud *bud, const uint32_t *table);
/**
 * Takes the lowest block of the smallest size that fits, or carves a chunk.
 * @param size 1 to 16 units
 * @param index the block's first unit; BUD_FREE_UNIT where the space is full
 * @return 0; RIB_BAD_PARAMETERS (index untouched), RIB_HW_FULL (fewer than 16 units uncarved), RIB_SW_BUG (the carve
 * mark is beyond the space), RIB_OUT_OF_MEMORY (the chunk is carved, but its blocks are not all listed)
 */
uint32_t bud_alloc(struct bud *bud, uint32_t size, uint32_t *index);
/**
 * Gives a block back. Free neighbours are merged before the block is looked up among the used ones: a block that was
 * never allocated but touches free ones changes them.
 * @return 0; RIB_BAD_PARAMETERS (nothing changed), RIB_FAILED (no such block)
 */
uint32_t bud_free(struct bud *bud, uint32_t size, uint32_t index);
/** Gives the descriptor back. @return 0; RIB_BAD_PARAMETERS for null */
uint32_t bud_destroy(struct bud *bud);
/** Stores the number of used blocks of size k + 1 into counts[k], 16 words. @return 0; RIB_FAILED for null */
uint32_t bud_used_count(const struct bud *bud, uint32_t *counts);
/** Stores the number of free blocks of size k + 1 into counts[k], 16 words. @return 0; RIB_FAILED for null */
uint32_t bud_free_count(const struct bud *bud, uint32_t *counts);
/**
 * Saves the state as an image in the host's order: total size, free space, carve mark, 16 counts of free blocks, 16
 * counts of used blocks, the indices of the free lists from size 1 up, those of the used lists.
 * @param buffer receives the image, which the caller gives back with free(); null on failure
 * @param length receives its size in bytes
 * @return 0; RIB_FAILED for a null descriptor, RIB_OUT_OF_MEMORY
 */
uint32_t bud_serialize(const struct bud *bud, uint8_t **buffer, uint32_t *length);
/**
 * Restores an image in the host's order, its counts trusted and its lists kept in the order in which they are stored.
 * @return 0; RIB_FAILED for a null descriptor or buffer; RIB_OUT_OF_MEMORY, with the lists rebuilt so far
 */
uint32_t bud_deserialize(struct bud *bud, const uint8_t *buffer);
/** Prints how many blocks of each size are free and used. */
void bud_show(const struct bud *bud);
/** Asks for a block size on standard input and prints the indices of the used blocks of that size. */
void bud_show_used(const struct bud *bud);
/** Prints the indices of the free blocks of a size. */
void bud_show_free(const struct bud *bud, uint32_t size);

/**
 * Tells whether an image in network order may be converted and restored. Lists in any order pass, and indices are not
 * judged: one beyond the space is handed out as the image says, so that whoever indexes a table with it looks first.
 * @param size the bytes that are there
 * @param report null, or filled when the image is refused
 * @return 0; RIB_BAD_PARAMETERS where bytes are missing, RIB_EXCESS_DATA where bytes remain
 */
uint32_t bud_check_image(const void *image, uint32_t size, struct rib_check_report *report);
/** Converts an image from host to network order; the two may be one buffer. @return the image's size in bytes */
uint32_t bud_image_hton(const void *host, void *network);
/** Converts an image from network to host order; the two may be one buffer. @return the image's size in bytes */
uint32_t bud_image_ntoh(const void *network, void *host);

/* Contiguous segments: one space of positions divided into consecutive segments, each packed at its bottom. The
 * caller's objects are moved by the caller's function; boundaries move in whole blocks. */

struct cont;

struct cont_config {
    uint32_t total;      /**< positions in the space */
    uint32_t block_size; /**< what segment sizes and boundary moves are multiples of */
    uint32_t segments;
};

/** Moves the objects at source .. source + count - 1 to destination and on. The result is ignored. */
typedef uint32_t (*cont_move_func)(uint32_t destination, uint32_t source, uint32_t count);
/** Told that a segment now owns count positions from first. @return 0; else the move ends with this code */
typedef uint32_t (*cont_mask_func)(uint32_t segment, uint32_t first, uint32_t count);

/**
 * @param config read during the call
 * @param sizes one size per segment, in positions
 * @param move_func may be null
 * @param mask_func may be null
 * @param moves_allowed non-zero: a full segment may take blocks from its neighbours
 * @return a descriptor; one that refuses all work where the sizes do not fit the space or its segments find no memory;
 * null where the configuration does not hold together or memory fails
 */
struct cont *cont_create(const struct cont_config *config, const uint32_t *sizes, cont_move_func move_func,
                         cont_mask_func mask_func, uint32_t moves_allowed);
/**
 * Takes the next position of a segment, which grows by a block of its neighbours' when it is full and may.
 * @param position the position; 0xdeadbeef on failure
 * @return 0; RIB_BAD_PARAMETERS; RIB_FAILED where the segment stays full, or what mask_func returned
 */
uint32_t cont_alloc(struct cont *cont, uint32_t segment, uint32_t *position);
/**
 * Lets cont_alloc and cont_resize print nothing (on not 0), or say again what they move (on 0, the start value): two
 * lines and the table of all segments for every boundary, which is what most of their time goes into. cont_show prints
 * all the same. Harmless for null.
 */
void cont_quiet(struct cont *cont, uint32_t on);
/** Gives a position back; the segment's last used one moves into it. @return 0; RIB_BAD_PARAMETERS */
uint32_t cont_free(struct cont *cont, uint32_t segment, uint32_t position);
/**
 * Stores the number of positions in use in a segment; 0 on failure. So one learns how many segments there are, after
 * cont_create or from a restored image: cont_count refuses the first number that is none.
 * @return 0; RIB_BAD_PARAMETERS
 */
uint32_t cont_count(const struct cont *cont, uint32_t segment, uint32_t *count);
/**
 * Gives the segments new sizes, one boundary after the other from the first segment on. The last segment has nobody to
 * give to or take from: its size stays.
 * @return 0; RIB_BAD_PARAMETERS for a size that is no multiple of the block size, RIB_FAILED or what mask_func returned
 * where a boundary did not move; what was done before stays
 */
uint32_t cont_resize(struct cont *cont, const uint32_t *sizes);
/** Gives the descriptor back. @return 0; RIB_BAD_PARAMETERS for null */
uint32_t cont_destroy(struct cont *cont);
/**
 * Saves the state as an image in the host's order: total, block size, segments, then size, first and free of each. The
 * functions and the moves-allowed flag are not part of it.
 * @param buffer receives the image, which the caller gives back with free(); null on failure
 * @param length receives its size in bytes
 * @return 0; RIB_FAILED for a null descriptor or one that lost its segments, RIB_OUT_OF_MEMORY
 */
uint32_t cont_serialize(const struct cont *cont, uint8_t **buffer, uint32_t *length);
/**
 * Restores an image in the host's order. The three words of the header are taken before anything is refused. What the
 * descriptor was told by cont_create and cont_quiet stays: functions, whether moves are allowed, whether they are
 * printed. cont_count tells how many segments came.
 * @return 0; RIB_FAILED for a null descriptor or buffer, RIB_BAD_PARAMETERS where the length is not the image's,
 * RIB_OUT_OF_MEMORY (the descriptor has no segments left)
 */
uint32_t cont_deserialize(struct cont *cont, const uint8_t *buffer, uint32_t length);
/** Prints the segments. */
void cont_show(const struct cont *cont);

/**
 * Tells whether an image in network order may be converted and restored. Positions are not judged: those beyond the
 * space go to the callbacks as the image says. Nor is the number of segments: a single cont_alloc on what was restored
 * may move as many boundaries, and print as many tables of as many lines unless cont_quiet is on.
 * @param size the bytes that are there
 * @param report null, or filled when the image is refused
 * @return 0; RIB_BAD_PARAMETERS where bytes are missing, RIB_EXCESS_DATA where bytes remain
 */
uint32_t cont_check_image(const void *image, uint32_t size, struct rib_check_report *report);
/** Converts an image from host to network order; the two may be one buffer. @return the image's size in bytes */
uint32_t cont_image_hton(const void *host, void *network);
/** Converts an image from network to host order; the two may be one buffer. @return the image's size in bytes */
uint32_t cont_image_ntoh(const void *network, void *host);

/* Pool: zero-filled items of one size, in chunks that come when all are full and go as soon as one is empty. */

struct pool;

/** @param chunk_size items in a chunk @param data_size bytes of an item @return an empty pool; null if memory fails */
struct pool *pool_create(uint32_t chunk_size, uint32_t data_size);
/** @return the lowest free item of the earliest chunk with room, zero-filled; null if memory fails */
void *pool_alloc(struct pool *pool);
/**
 * Gives an item back. An item that is already free is reported by a trace line only.
 * @return 0; RIB_BAD_PARAMETERS for null; RIB_FAILED for what is no item of this pool
 */
uint32_t pool_free(struct pool *pool, void *item);
/** Stores the number of items in use; 0 for a null pool. @return 0 */
uint32_t pool_count(const struct pool *pool, uint32_t *count);
/** Gives the pool and all its items back. @return 0; RIB_BAD_PARAMETERS for null */
uint32_t pool_destroy(struct pool *pool);
/** Prints the chunks with their bitmaps. */
void pool_show(const struct pool *pool);

#ifdef __cplusplus
}
#endif

#endif
