/* Built against an installed cblxml only: parses a small document through
   the XML PARSE entry and prints its events. Exits 0 when the parse reached
   END-OF-DOCUMENT. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <cblxml.h>

int main(void)
{
    static const char doc[] = "<order id=\"7\">ok</order>";
    xd_parse_info *state = NULL;
    void *document = (void *)doc, *text = NULL;
    uint32_t length = sizeof doc - 1, text_length = 0, flags = 0;
    unsigned char code[4];
    char event[30];
    for (int n = 0; n == 0 || (state != NULL && n < 100); ++n) {
        CBL_XMLPARSE_INTERFACE(&state, &document, &text, &length, &text_length, code, event,
                               &flags);
        printf("%.30s|%.*s\n", event, (int)text_length, text != NULL ? (const char *)text : "");
    }
    free(text); /* the last event's text belongs to the caller */
    return memcmp(event, "END-OF-DOCUMENT", 15) == 0 ? 0 : 1;
}
