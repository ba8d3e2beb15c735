/* The catalogue as a C program reads it: whole, in order, and saying of every message what its functions do. */
#include <rib_codes.h>
#include <ribkit_catalogue.h>

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

static unsigned failures;

static void expect(int holds, const char *what, const char *where, const char *name) {
    if (!holds) {
        printf("%s %s: %s\n", where, name, what);
        ++failures;
    }
}

static int is_list(const struct ribkit_row *r) { return r->kind == RIBKIT_KIND_LIST || r->kind == RIBKIT_KIND_RECORDS; }

/* A count stands in a word of its own in front of the list. */
static int has_count(const struct ribkit_layout *l, uint32_t row) {
    const struct ribkit_row *list = l->rows[row];
    if (list->count == RIBKIT_COUNT_CONSTANT) {
        return list->count_at == list->bound;
    }
    for (uint32_t i = 0; i < row; ++i) {
        if (l->rows[i]->kind == RIBKIT_KIND_WORD && l->rows[i]->offset == list->count_at) {
            return 1;
        }
    }
    return 0;
}

static int is_in_catalogue(const struct ribkit_layout *l) {
    const struct ribkit_catalogue *all = ribkit_catalogue_get();
    for (uint32_t i = 0; i < all->n_layouts; ++i) {
        if (all->layouts[i] == l) {
            return 1;
        }
    }
    return 0;
}

static void check_vocabulary(const struct ribkit_vocabulary *v, const char *where, const char *name) {
    if (v != NULL) {
        expect(ribkit_catalogue_vocabulary(v->name) == v, "a vocabulary that is not found by its name", where, name);
    }
}

static void check_parts(const struct ribkit_layout *l, const struct ribkit_row *r) {
    for (uint32_t i = 0; i < r->n_parts; ++i) {
        const struct ribkit_part *p = r->parts[i];
        expect(p->name[0] != '\0' && p->bits != 0 && p->shift + p->bits <= 8 * r->size, "a part outside", l->name,
               r->name);
        check_vocabulary(p->vocabulary, l->name, r->name);
    }
}

static void check_row(const struct ribkit_layout *l, uint32_t i, uint32_t offset) {
    const struct ribkit_row *r = l->rows[i];
    expect(r->offset == offset, "a hole or an overlap", l->name, r->name);
    expect(is_list(r) == (r->entry != NULL), "a list without an entry, or an entry without a list", l->name, r->name);
    expect(is_list(r) == (r->count != RIBKIT_COUNT_NONE), "a list without a count", l->name, r->name);
    expect(r->size != 0 || (is_list(r) && i + 1 == l->n_rows), "nothing in the middle", l->name, r->name);
    expect((r->kind == RIBKIT_KIND_MASKED) == (r->mask != 0), "a mask", l->name, r->name);
    expect((r->kind == RIBKIT_KIND_NAME) == (r->longest != 0), "a longest name", l->name, r->name);
    expect((r->meaning == RIBKIT_MEANING_PLAIN) == (r->meaning_text[0] == '\0'), "a meaning", l->name, r->name);
    if (is_list(r)) {
        expect(has_count(l, i), "a count that is not there", l->name, r->name);
        expect(is_in_catalogue(r->entry), "an entry that is not there", l->name, r->name);
        expect(r->size == r->stride * r->bound, "room for something else", l->name, r->name);
    }
    check_parts(l, r);
    check_vocabulary(r->vocabulary, l->name, r->name);
}

static void check_layout(const struct ribkit_layout *l) {
    uint32_t end = 0;
    for (uint32_t i = 0; i < l->n_rows; ++i) {
        check_row(l, i, end);
        end += l->rows[i]->size;
    }
    expect(end == l->size, "rows that do not add up", "layout", l->name);
    expect(l->wire_digest != l->description_digest, "one digest", "layout", l->name);
}

/* A table's texts are what the function writes. */
static void check_texts(const struct ribkit_vocabulary *v) {
    char text[RIBKIT_CATALOGUE_TEXT_SIZE];
    for (uint32_t i = 0; i < v->n_texts; ++i) {
        v->to_text(v->texts[i].value, text);
        expect(strcmp(text, v->texts[i].text) == 0, "another text", v->name, v->texts[i].text);
    }
    memset(text, 0, sizeof text);
    v->to_text(0xffffffff, text);
    expect(text[0] != '\0' && text[sizeof text - 1] == '\0', "a number without a text", "vocabulary", v->name);
}

static void check_message(const struct ribkit_message *m) {
    const struct ribkit_choice *c = m->choice;
    expect(ribkit_catalogue_message(m->name) == m, "not found by its name", "message", m->name);
    expect(is_in_catalogue(m->layout), "a layout that is not there", "message", m->name);
    expect((m->to_network != NULL) == (m->to_host != NULL), "one direction", "message", m->name);
    for (uint32_t i = 0; c != NULL && i < c->n_cases; ++i) {
        expect(is_in_catalogue(c->cases[i]->layout), "a case that is not there", "message", m->name);
    }
}

static uint32_t trouble(const struct ribkit_message *m, const uint8_t *bytes, uint32_t size) {
    struct rib_check_report report;
    return m->check(bytes, size, &report);
}

/* A message goes through its functions. */
static void check_functions(void) {
    const struct ribkit_message *m = ribkit_catalogue_message("rib_fcmrt");
    const uint8_t network[20] = {0xef, 1, 2, 3, [12] = 0, 0, 0, 1, 1, 2, 3, 4};
    uint32_t host[5];
    uint8_t back[20];
    expect(trouble(m, network, 20) == RIB_OK, "refused", "message", m->name);
    expect(trouble(m, network, 19) == RIB_BAD_PARAMETERS, "accepted", "message", m->name);
    expect(m->to_host(network, host) == 20, "another size", "message", m->name);
    expect(host[3] == 1 && host[4] == 0x01020304, "not in host order", "message", m->name);
    expect(m->to_network(host, back) == 20 && memcmp(network, back, 20) == 0, "not in network order", "message",
           m->name);

    const uint8_t update[36] = {[15] = 1, [16] = 0xef, [31] = 1};
    m = ribkit_catalogue_message("rib_fcmrt_update");
    expect(m->size(update) == 36, "another size", "message", m->name);
    expect(m->layout->rows[m->layout->n_rows - 1]->entry == ribkit_catalogue_message("rib_fcmrt")->layout,
           "another record", "message", m->name);
}

/* The key of a verification report, as a reader picks it. */
static const struct ribkit_layout *chosen(const struct ribkit_choice *c, uint32_t word) {
    for (uint32_t i = 0; i < c->n_cases; ++i) {
        const struct ribkit_case *one = c->cases[i];
        if (one->condition == RIBKIT_OTHERWISE || (one->condition == RIBKIT_IF_EQUAL && word == one->operand) ||
            (one->condition == RIBKIT_IF_ANY_BIT && (word & one->operand) != 0)) {
            return one->layout;
        }
    }
    return NULL;
}

static void expect_chosen(const char *message, uint32_t word, const char *layout) {
    const struct ribkit_layout *l = chosen(ribkit_catalogue_message(message)->choice, word);
    expect(strcmp(l != NULL ? l->name : "", layout) == 0, "another choice", message, layout);
}

static void check_choices(void) {
    expect_chosen("rib_verf_info", 0x10, "verf_fcl");
    expect_chosen("rib_verf_info", 0x2, "verf_fcm");
    expect_chosen("rib_verf_query", 0x3, "verf_fcl_query");
    expect_chosen("rib_verf_query", 0x10000, "verf_fcu");
    expect_chosen("rib_in_info", 1, "in_ha");
    expect_chosen("rib_in_info", 2, "in_mem");
    expect_chosen("rib_in_info", 3, "");
    const struct ribkit_choice *keys = ribkit_catalogue_message("rib_verf_info")->choice;
    const struct ribkit_choice *key = ribkit_catalogue_message("rib_verf_query")->choice;
    expect(keys->offset == 16 && keys->by == 4 && keys->count == RIBKIT_COUNT_WORD && keys->count_at == 0, "other keys",
           "message", "rib_verf_info");
    expect(key->offset == 16 && key->by == 12 && key->count == RIBKIT_COUNT_NONE, "another key", "message",
           "rib_verf_query");
}

static void check_control_text(void) {
    char text[RIBKIT_CATALOGUE_TEXT_SIZE];
    ribkit_catalogue_vocabulary("rib_fclrt_ctrl")->to_text(0x01028000, text);
    expect(strcmp(text, "push=2 pop=1 use_UP=T use_TTL=F dec_TTL=F") == 0, text, "vocabulary", "rib_fclrt_ctrl");
}

int main(void) {
    const struct ribkit_catalogue *all = ribkit_catalogue_get();
    expect(all->version == RIBKIT_CATALOGUE_VERSION, "another version", "the", "catalogue");
    for (uint32_t i = 0; i < all->n_layouts; ++i) {
        check_layout(all->layouts[i]);
    }
    for (uint32_t i = 0; i < all->n_vocabularies; ++i) {
        check_texts(all->vocabularies[i]);
    }
    for (uint32_t i = 0; i < all->n_messages; ++i) {
        check_message(all->messages[i]);
        expect(all->messages[i]->to_host != NULL && all->messages[i]->check != NULL, "no functions", "message",
               all->messages[i]->name);
    }
    for (uint32_t i = 0; i < all->n_forms; ++i) {
        check_message(all->forms[i]);
        expect(all->forms[i]->to_host == NULL, "a converter", "form", all->forms[i]->name);
    }
    expect(ribkit_catalogue_message("nosuch") == NULL && ribkit_catalogue_vocabulary("") == NULL, "found", "name",
           "nosuch");
    check_functions();
    check_choices();
    check_control_text();
    printf("%" PRIu32 " messages, %" PRIu32 " forms, %" PRIu32 " layouts, %" PRIu32 " vocabularies, %u failures\n",
           all->n_messages, all->n_forms, all->n_layouts, all->n_vocabularies, failures);
    return failures != 0;
}
