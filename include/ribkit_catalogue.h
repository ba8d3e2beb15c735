/** @file
 * The catalogue: every message of the RIB's client protocol and of the RIB-to-FIB protocol as plain data, to make
 * bindings, decoders and descriptions from. Link with -lribkit-catalogue -lribkit, and on a host -lribkit-platform.
 *
 * All of it is constant: nothing is allocated, nothing has to be freed, and any thread may read it. Offsets and sizes
 * are bytes. Words (32 bits) and halves (16 bits) are big-endian in a message that travels (network form) and of the
 * machine's order in host form; everything else is the same in both.
 *
 * How it grows. ribkit_catalogue_get()->version is RIBKIT_CATALOGUE_VERSION of the library that is linked; each version
 * adds to the one before it and takes nothing away. Structs grow at their end only, and are reached through pointers:
 * what was built with an older header reads a newer library. What was built with a newer header looks at the version
 * before it reads a member that says "since version N"; those that say nothing are as old as the catalogue. A reader
 * passes over kinds, meanings and conditions that it does not know. Pointers and texts are never null where nothing is
 * said of it; a text that is not there is "".
 */
#ifndef RIBKIT_CATALOGUE_H
#define RIBKIT_CATALOGUE_H

#include "rib_check.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define RIBKIT_CATALOGUE_VERSION 1u

/** Bytes that hold the text of any vocabulary, terminator included. */
#define RIBKIT_CATALOGUE_TEXT_SIZE 64u

/** What is done with a row's bytes when its message is converted. */
enum ribkit_kind {
    RIBKIT_KIND_WORD = 1, /**< a number of 4 bytes, converted */
    RIBKIT_KIND_HALF,     /**< a number of 2 bytes, converted */
    RIBKIT_KIND_BYTES,  /**< carried as they stand; one, two or four of them may be a number, the highest byte first */
    RIBKIT_KIND_MASKED, /**< one byte, of which only the bits of `mask` are carried */
    RIBKIT_KIND_ZERO,   /**< written as zero whatever the source holds */
    RIBKIT_KIND_GAP,    /**< carried by nobody: the destination keeps what it held */
    RIBKIT_KIND_NAME,   /**< a string of at most `longest` characters, zero-filled to its size */
    RIBKIT_KIND_LIST,   /**< entries of the layout `entry` */
    RIBKIT_KIND_RECORDS /**< as an open list, whose entries are messages that are converted one by one */
};

/** What a number or a run of bytes means to a reader. */
enum ribkit_meaning {
    RIBKIT_MEANING_PLAIN,
    RIBKIT_MEANING_CLIENT,    /**< RIB_CLIENT_FSPF, ... */
    RIBKIT_MEANING_OPERATION, /**< of an update */
    RIBKIT_MEANING_ACTION,    /**< of a route */
    RIBKIT_MEANING_FLAGS,     /**< of a route */
    RIBKIT_MEANING_VSAN,
    RIBKIT_MEANING_FC_ID,
    RIBKIT_MEANING_FC_MASK,
    RIBKIT_MEANING_INTERFACE, /**< an interface index */
    RIBKIT_MEANING_LABEL,     /**< a label stack entry */
    RIBKIT_MEANING_CONTROL,   /**< what an interface does to labels */
    RIBKIT_MEANING_DOMAIN,
    RIBKIT_MEANING_COST,
    RIBKIT_MEANING_COUNT,
    RIBKIT_MEANING_TIME,    /**< seconds since 1970 */
    RIBKIT_MEANING_DOMAINS, /**< a bitmap of domains 0 to 239 */
    RIBKIT_MEANING_PORTS,   /**< a bitmap of ports; its second half is the gap behind it */
    RIBKIT_MEANING_TEXT     /**< characters, to the first that is 0 */
};

/** Where a list's number of entries stands. */
enum ribkit_count {
    RIBKIT_COUNT_NONE,        /**< no list */
    RIBKIT_COUNT_WORD,        /**< in the word at `count_at` */
    RIBKIT_COUNT_SECOND_BYTE, /**< in bits 23 to 16 of the word at `count_at` */
    RIBKIT_COUNT_CONSTANT     /**< it is always `count_at` */
};

struct ribkit_layout;

/** A number and its text. Of a fixed size: it does not grow. */
struct ribkit_text {
    uint32_t value;
    const char *text;
};

/** What numbers are called. */
struct ribkit_vocabulary {
    const char *name; /**< "rib_action": the exported function without "_to_str" */
    /** Writes the text of any number, RIBKIT_CATALOGUE_TEXT_SIZE bytes at most. Where numbers are masks, more of them
     * have a text than stand in the table. */
    void (*to_text)(uint32_t value, char *text);
    const char *other; /**< printf format of a number that is not among the texts; null where every text is composed */
    uint32_t n_texts;  /**< 0 where every text is composed */
    const struct ribkit_text *texts;
};

/** Some bits of a number that have a name of their own. */
struct ribkit_part {
    const char *name;
    uint32_t shift; /**< of its lowest bit */
    uint32_t bits;
    const struct ribkit_vocabulary *vocabulary; /**< null where it has no texts */
};

/** A field of a message, or a list. */
struct ribkit_row {
    const char *name; /**< "n_hop"; of what nothing names its kind and offset, "word_16" */
    uint32_t named;   /**< 0 where that is all the name says */
    enum ribkit_kind kind;
    const char *kind_name; /**< "word" */
    uint32_t offset;       /**< from the start of the message or of the entry */
    uint32_t size;         /**< 0 for a list without a bound, which comes last */
    uint32_t mask;         /**< RIBKIT_KIND_MASKED: the bits that are carried */
    uint32_t longest;      /**< RIBKIT_KIND_NAME */
    uint32_t in_run;       /**< not 0: in one run with the row before it; a check names a run "first..last" */

    enum ribkit_meaning meaning;
    const char *meaning_text;                   /**< "FC ID" */
    const struct ribkit_vocabulary *vocabulary; /**< null where it has no texts */
    const char *unit;                           /**< "ms" */
    uint32_t shown_more;                        /**< what a reader is shown is the number and this */
    uint32_t n_parts;
    const struct ribkit_part *const *parts; /**< bits are counted from 0, the lowest of the number */

    /* Lists and records. */
    enum ribkit_count count;
    uint32_t count_at;
    uint32_t stride;                   /**< from entry to entry; 0: one behind the other, each as long as it says */
    uint32_t bound;                    /**< entries there is room for, unused ones are zeroed; 0: no bound */
    const struct ribkit_layout *entry; /**< null where the row is no list */
};

/** The bytes of a message or of an entry. */
struct ribkit_layout {
    const char *name; /**< "fcurt"; no two have the same */
    uint32_t size;    /**< of its fixed part, bounded lists included */
    uint32_t n_rows;
    const struct ribkit_row *const *rows; /**< one behind the other, without a hole */
    uint32_t wire_digest;                 /**< changes with what happens to the bytes, and with no name */
    uint32_t description_digest;          /**< changes with every name, too */
};

/** When a case of a choice is taken. */
enum ribkit_condition {
    RIBKIT_IF_ANY_BIT = 1, /**< the deciding word has a bit of `operand` */
    RIBKIT_IF_EQUAL,       /**< it is `operand` */
    RIBKIT_OTHERWISE       /**< always */
};

struct ribkit_case {
    enum ribkit_condition condition;
    uint32_t operand;
    const struct ribkit_layout *layout;
};

/** What a message holds that one of its words decides. The first case whose condition holds is what is there. */
struct ribkit_choice {
    const char *name;        /**< "key", "body" */
    uint32_t offset;         /**< where it begins */
    uint32_t by;             /**< offset of the deciding word */
    enum ribkit_count count; /**< RIBKIT_COUNT_NONE: there is one; else so many, one behind the other */
    uint32_t count_at;
    uint32_t n_cases;
    const struct ribkit_case *const *cases; /**< where none holds, there is nothing */
};

/**
 * A message and every function that takes it; functions are null where a message has none.
 *
 * A form is a message without converters: what stands around messages or in them, and what displays read.
 */
struct ribkit_message {
    const char *name; /**< "rib_fcurt"; its converters are exported as "rib_hton_fcurt" and "rib_ntoh_fcurt" */
    const struct ribkit_layout *layout;

    /**
     * Converts from host to network form and back, in one buffer or from one into another that do not overlap. Counts
     * are trusted. @return what the exported function does (rib_codec.h, fib_codec.h); 0 where that returns nothing
     */
    uint32_t (*to_network)(const void *src, void *dst);
    uint32_t (*to_host)(const void *src, void *dst); /**< as to_network */

    /** Whether bytes in network form may be given to all the others: see rib_check.h. A form of a fixed size has none:
     * so many bytes will do. */
    uint32_t (*check)(const void *message, uint32_t size, struct rib_check_report *report);

    /** @return the size of an update in network form with its records */
    uint32_t (*size)(const void *message);

    /**
     * Prints what is sent, one line or more, on standard output: see rib_trace.h.
     * @param message in network form
     * @param size of the whole message, as it is to be printed
     * @param update the message that a record stands in (a row of RIBKIT_KIND_RECORDS); what is no record itself
     */
    void (*trace)(const void *message, uint32_t size, const void *update);

    /**
     * Shows the message on standard output as the switch does: see rib_show.h.
     * @param header heads of columns are printed where it is not 0; cleared then
     * @param message in network form
     */
    void (*show)(uint32_t *header, const void *message);

    const struct ribkit_choice *choice; /**< null where nothing is chosen */
    const char *odd;                    /**< a sentence on what no row says */
};

/** All there is. */
struct ribkit_catalogue {
    uint32_t version;
    uint32_t n_messages;
    const struct ribkit_message *const *messages;
    uint32_t n_forms;
    const struct ribkit_message *const *forms;
    uint32_t n_layouts;
    const struct ribkit_layout *const *layouts; /**< of messages, forms, their entries and choices, each once */
    uint32_t n_vocabularies;
    const struct ribkit_vocabulary *const *vocabularies;
};

/** @return all messages, layouts and vocabularies: constant, and the library's own */
const struct ribkit_catalogue *ribkit_catalogue_get(void);

/** @return the message or form of that name ("rib_fcurt"); null where there is none */
const struct ribkit_message *ribkit_catalogue_message(const char *name);

/** @return the vocabulary of that name ("rib_action"); null where there is none */
const struct ribkit_vocabulary *ribkit_catalogue_vocabulary(const char *name);

#ifdef __cplusplus
}
#endif

#endif
