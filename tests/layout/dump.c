/* What a COBOL program built with the copybooks of cblxml-layout holds, as
   text that does not depend on where it lives: linked record entries with
   every address written as an offset from the record's first descriptor,
   and the file control block field by field. Compiled into the test COBOL
   programs by cobc and into layout_dump, the builder's side. */
#include <stdio.h>
#include <string.h>

#include "cblxml.h"

static void put_address(const char *what, const void *at, const void *base)
{
    if (at == NULL)
        printf(" %s=-", what);
    else
        printf(" %s=%+ld", what, (long)((const char *)at - (const char *)base));
}

static void put_hex(const unsigned char *bytes, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        printf("%02X", bytes[i]);
}

/* Descriptors are read by memcpy: every second one is not aligned. */
#define FIELD(desc, name, out)                                                                     \
    memcpy(&(out), (const char *)(desc) + offsetof(IDESC, name), sizeof(out))

void layout_dump(const xml_rec_entry_t *entries, const uint32_t *count)
{
    for (uint32_t r = 0; r < *count; ++r) {
        const xml_rec_entry_t *e = &entries[r];
        const IDESC *root = e->root;
        printf("record %u: descriptors %u flags %u", r + 1, e->desc_count, e->link_flags);
        put_address("last", e->last_desc, root);
        printf("\n");
        uint32_t span = 0;
        FIELD(root, slot_span, span);
        printf("counts:");
        for (uint32_t s = 0; s <= span; ++s)
            printf(" %X", e->counts[s]);
        printf("\n");
        const IDESC *d = root;
        for (uint32_t i = 0; i < e->desc_count && d != NULL; ++i) {
            static const char *const names[] = {"parent", "prev",  "next", "first", "last",
                                                "before", "after", "name", "ns",    "third"};
            printf("%u:", i);
            for (int p = 0; p < 10; ++p) {
                const void *at;
                memcpy(&at, (const char *)d + 8 * p, sizeof at);
                put_address(names[p], at, root);
            }
            printf(" head=");
            put_hex((const unsigned char *)d + 80, IDESC_HEAD_SIZE - 80);
            uint32_t lengths[3];
            const char *strings[3];
            FIELD(d, name_len, lengths[0]);
            FIELD(d, namespace_len, lengths[1]);
            FIELD(d, third_len, lengths[2]);
            FIELD(d, name_ptr, strings[0]);
            FIELD(d, namespace_ptr, strings[1]);
            FIELD(d, third_ptr, strings[2]);
            for (int s = 0; s < 3; ++s) {
                if (strings[s] != NULL)
                    printf(" [%.*s]", (int)lengths[s], strings[s]);
            }
            printf("\n");
            FIELD(d, next_desc, d);
        }
    }
    fflush(stdout);
}

/* The control block as the library sees it. */
void fcb_report(xmlio_fcb *fcb)
{
    const void *pointers[] = {fcb->doc,       fcb->records,      fcb->key_item, fcb->reserved24,
                              fcb->name,      fcb->doctype_name, fcb->read_buf, fcb->builder_aux,
                              fcb->dm_handle, fcb->arg2,         fcb->stream};
    printf("pointers:");
    for (size_t i = 0; i < sizeof pointers / sizeof pointers[0]; ++i)
        printf(" %s", pointers[i] == NULL ? "null" : pointers[i] == fcb ? "self" : "other");
    printf("\n");
    printf("arg2_len=%u key_occurrence=%u rec_no=%u rec_read=%u name_len=%u\n", fcb->arg2_len,
           fcb->key_occurrence, fcb->rec_no, fcb->rec_read, fcb->name_len);
    printf("doctype_len=%u read_buf_len=%u rec_count=%u status=%d flags=%u\n", fcb->doctype_len,
           fcb->read_buf_len, fcb->rec_count, fcb->status, fcb->flags);
    printf("open_mode=%u opcode=%u reserved=%u %u\n", fcb->open_mode, fcb->opcode, fcb->reserved132,
           fcb->reserved120);
    fflush(stdout);
    /* Back to the program: what its 88 levels must see. */
    fcb->status = XMLIO_ST_UNWRITTEN;
    fcb->open_mode = XMLIO_EXTEND;
    fcb->opcode = XMLIO_OP_REWRITE;
}
