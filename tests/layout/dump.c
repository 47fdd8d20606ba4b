/* What a program built with cblxml-layout's copybooks holds, as text that
   does not depend on addresses: linked record entries, every address an
   offset from the record's first descriptor; and the control block. Built
   into the test COBOL programs by cobc and into layout_dump. */
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

/* Descriptors are read by memcpy: every second one is not aligned. */
#define FIELD(desc, name, out)                                                                     \
    memcpy(&(out), (const char *)(desc) + offsetof(IDESC, name), sizeof(out))

void layout_dump(const xml_rec_entry_t *entries, const uint32_t *count)
{
    static const char *const names[] = {"parent", "prev",  "next", "first", "last",
                                        "before", "after", "name", "ns",    "third"};
    for (uint32_t r = 0; r < *count; ++r) {
        const xml_rec_entry_t *e = &entries[r];
        const IDESC *d = e->root;
        uint32_t span = 0;
        FIELD(d, slot_span, span);
        printf("record %u: descriptors %u flags %u counts %u", r + 1, e->desc_count, e->link_flags,
               span + 1);
        put_address("last", e->last_desc, e->root);
        for (uint32_t i = 0; i < e->desc_count && d != NULL; ++i) {
            printf("\n%u:", i);
            for (int p = 0; p < 10; ++p) {
                const void *at;
                memcpy(&at, (const char *)d + 8 * p, sizeof at);
                put_address(names[p], at, e->root);
            }
            printf(" head=");
            for (size_t b = 80; b < IDESC_HEAD_SIZE; ++b)
                printf("%02X", ((const unsigned char *)d)[b]);
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
            memcpy(&d, (const char *)d + offsetof(IDESC, next_desc), sizeof(IDESC *));
        }
        printf("\n");
    }
    fflush(stdout);
}

/* The control block as the library sees it; then values for the program's
   88 levels to recognise. */
void fcb_report(xmlio_fcb *fcb)
{
    const void *pointers[] = {fcb->doc,       fcb->records,      fcb->key_item, fcb->reserved24,
                              fcb->name,      fcb->doctype_name, fcb->read_buf, fcb->builder_aux,
                              fcb->dm_handle, fcb->arg2,         fcb->stream};
    for (size_t i = 0; i < sizeof pointers / sizeof pointers[0]; ++i)
        printf("%s ", pointers[i] == NULL ? "null" : pointers[i] == fcb ? "self" : "other");
    printf("\n%u %u %u %u %u %u %u %u %u %d %u %u %u %u\n", fcb->arg2_len, fcb->key_occurrence,
           fcb->rec_no, fcb->rec_read, fcb->name_len, fcb->doctype_len, fcb->read_buf_len,
           fcb->rec_count, fcb->reserved120, fcb->status, fcb->flags, fcb->reserved132,
           fcb->open_mode, fcb->opcode);
    fflush(stdout);
    fcb->status = XMLIO_ST_UNWRITTEN;
    fcb->open_mode = XMLIO_EXTEND;
    fcb->opcode = XMLIO_OP_REWRITE;
}
