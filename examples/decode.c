/* A C program that links ribkit-catalogue: the fields of any message, by their names. `decode rib_fcmrt <BYTES` reads a
 * message in network form, checks it, and prints a line for each field. It knows no message itself. */
#include <ribkit_catalogue.h>

#include <inttypes.h>
#include <stdio.h>

/* A number of 1, 2 or 4 bytes, the highest first. */
static uint32_t number(const uint8_t *at, uint32_t size) {
    uint32_t value = 0;
    while (size-- != 0) {
        value = value << 8 | *at++;
    }
    return value;
}

static uint32_t count_of(enum ribkit_count count, uint32_t at, const uint8_t *message) {
    switch (count) {
    case RIBKIT_COUNT_WORD:
        return number(message + at, 4);
    case RIBKIT_COUNT_SECOND_BYTE:
        return message[at + 1];
    default:
        return at;
    }
}

static void print_number(uint32_t value, const struct ribkit_vocabulary *vocabulary) {
    char text[RIBKIT_CATALOGUE_TEXT_SIZE];
    printf(" 0x%" PRIx32, value);
    if (vocabulary != NULL) {
        vocabulary->to_text(value, text);
        printf(" (%s)", text);
    }
}

static void print_parts(const struct ribkit_row *row, uint32_t value) {
    for (uint32_t i = 0; i < row->n_parts; ++i) {
        const struct ribkit_part *part = row->parts[i];
        printf(", %s", part->name);
        print_number((uint32_t)(value >> part->shift & ((UINT64_C(1) << part->bits) - 1)), part->vocabulary);
    }
}

static void print_field(const struct ribkit_row *row, const uint8_t *at, unsigned depth) {
    printf("%*s%s", 2 * depth, "", row->name);
    if (row->kind == RIBKIT_KIND_NAME || row->meaning == RIBKIT_MEANING_TEXT) {
        printf(" \"%.*s\"", (int)row->size, (const char *)at);
    } else if (row->size > 4 || row->size == 3) {
        for (uint32_t i = 0; i < row->size; ++i) {
            printf(" %02x", at[i]);
        }
    } else {
        const uint32_t value = number(at, row->size) + row->shown_more;
        print_number(value, row->vocabulary);
        print_parts(row, value);
    }
    printf(*row->unit != '\0' ? " %s\n" : "\n", row->unit);
}

/* @return the bytes that are there, lists included */
static uint32_t print_layout(const struct ribkit_layout *layout, const uint8_t *message, unsigned depth) {
    uint32_t end = layout->size;
    for (uint32_t i = 0; i < layout->n_rows; ++i) {
        const struct ribkit_row *row = layout->rows[i];
        if (row->entry == NULL) {
            print_field(row, message + row->offset, depth);
            continue;
        }
        const uint32_t n = count_of(row->count, row->count_at, message);
        uint32_t at = row->offset;
        for (uint32_t entry = 0; entry < n; ++entry) {
            printf("%*s%s %" PRIu32 "\n", 2 * depth, "", row->name, entry);
            const uint32_t length = print_layout(row->entry, message + at, depth + 1);
            at += row->stride != 0 ? row->stride : length;
        }
        end = at > end ? at : end;
    }
    return end;
}

static int holds(const struct ribkit_case *one, uint32_t word) {
    return one->condition == RIBKIT_OTHERWISE || (one->condition == RIBKIT_IF_EQUAL && word == one->operand) ||
           (one->condition == RIBKIT_IF_ANY_BIT && (word & one->operand) != 0);
}

/* What stands in the message because one of its words says so. */
static void print_choice(const struct ribkit_choice *choice, const uint8_t *message) {
    const uint32_t n = choice->count == RIBKIT_COUNT_NONE ? 1 : count_of(choice->count, choice->count_at, message);
    for (uint32_t i = 0; i < choice->n_cases; ++i) {
        const struct ribkit_layout *chosen = choice->cases[i]->layout;
        if (holds(choice->cases[i], number(message + choice->by, 4))) {
            for (uint32_t entry = 0; entry < n; ++entry) {
                printf("%s %" PRIu32 ", a %s\n", choice->name, entry, chosen->name);
                print_layout(chosen, message + choice->offset + entry * chosen->size, 1);
            }
            return;
        }
    }
}

/* A form without a check is as long as its layout. */
static int is_whole(const struct ribkit_message *message, const uint8_t *bytes, uint32_t size) {
    struct rib_check_report report;
    char line[200];
    if (message->check == NULL) {
        return size == message->layout->size;
    }
    if (message->check(bytes, size, &report) == 0) {
        return 1;
    }
    rib_check_report_str(&report, line, sizeof line);
    fprintf(stderr, "%s\n", line);
    return 0;
}

int main(int argc, char **argv) {
    static uint8_t bytes[1 << 16];
    const struct ribkit_message *message = argc == 2 ? ribkit_catalogue_message(argv[1]) : NULL;
    if (message == NULL) {
        fprintf(stderr, "usage: decode MESSAGE <BYTES\n");
        return 2;
    }
    if (!is_whole(message, bytes, (uint32_t)fread(bytes, 1, sizeof bytes, stdin))) {
        return 1;
    }
    print_layout(message->layout, bytes, 0);
    if (message->choice != NULL) {
        print_choice(message->choice, bytes);
    }
    return 0;
}
