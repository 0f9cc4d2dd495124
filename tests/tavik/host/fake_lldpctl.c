/* Stands in place of the LLDP daemon's library: the same calls, and a protocol of lines. It asks with "?", and gets
 * "interface TAB chassis TAB port TAB name TAB description" for each neighbour, an interface alone where it has none,
 * and "." on a line at the end. */
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

enum { mostEntries = 16, fields = 5, room = 4096 };

typedef struct Connection Connection;
typedef ssize_t (*Transfer)(Connection*, const uint8_t*, size_t, void*);

typedef struct Atom {
    Connection* connection;
    int entry; /* -1: the list of all */
    int isList;
} Atom;

struct Connection {
    Transfer send, receive;
    void* user;
    int error;
    char answer[room];
    char* entry[mostEntries][fields];
    int count;
};

const char* lldpctl_get_default_transport(void) { return getenv("FAKE_LLDP_SOCKET"); }

Connection* lldpctl_new_name(const char* name, Transfer send, Transfer receive, void* user) {
    Connection* connection = calloc(1, sizeof *connection);
    (void)name;
    connection->send = send;
    connection->receive = receive;
    connection->user = user;
    return connection;
}

int lldpctl_release(Connection* connection) {
    free(connection);
    return 0;
}

int lldpctl_last_error(Connection* connection) { return connection->error; }

static Atom* newAtom(Connection* connection, int entry, int isList) {
    Atom* atom = calloc(1, sizeof *atom);
    atom->connection = connection;
    atom->entry = entry;
    atom->isList = isList;
    return atom;
}

static void split(Connection* connection) {
    char *lines = NULL, *words = NULL;
    for (char* line = strtok_r(connection->answer, "\n", &lines);
         line && *line != '.' && connection->count < mostEntries; line = strtok_r(NULL, "\n", &lines)) {
        int place = 0;
        for (char* word = strtok_r(line, "\t", &words); word && place < fields; word = strtok_r(NULL, "\t", &words))
            connection->entry[connection->count][place++] = word;
        ++connection->count;
    }
}

Atom* lldpctl_get_interfaces(Connection* connection) {
    size_t size = 0;
    if (connection->send(connection, (const uint8_t*)"?", 1, connection->user) != 1) return NULL;
    while (size < 2 || memcmp(connection->answer + size - 2, ".\n", 2) != 0) {
        const ssize_t got =
            connection->receive(connection, (uint8_t*)connection->answer + size, room - 1 - size, connection->user);
        if (got <= 0) {
            connection->error = (int)got;
            return NULL;
        }
        size += (size_t)got;
    }
    split(connection);
    return newAtom(connection, -1, 1);
}

Atom* lldpctl_get_port(Atom* interface) { return newAtom(interface->connection, interface->entry, 0); }

Atom* lldpctl_atom_get(Atom* port, int key) { return key == 1200 ? newAtom(port->connection, port->entry, 1) : NULL; }

const char* lldpctl_atom_get_str(Atom* atom, int key) {
    char** entry = atom->connection->entry[atom->entry];
    switch (key) {
    case 1000:
        return entry[0];
    case 1802:
        return entry[1];
    case 1204:
        return entry[2];
    case 1803:
        return entry[3];
    case 1205:
        return entry[4];
    default:
        return NULL;
    }
}

/* A place in a list is the number of an entry and one. */
void* lldpctl_atom_iter(Atom* list) {
    const int isEmpty = list->entry >= 0 ? !list->connection->entry[list->entry][1] : list->connection->count == 0;
    return isEmpty ? NULL : (void*)(intptr_t)(list->entry < 0 ? 1 : list->entry + 1);
}

void* lldpctl_atom_iter_next(Atom* list, void* place) {
    const intptr_t next = (intptr_t)place + 1;
    return list->entry < 0 && next <= list->connection->count ? (void*)next : NULL;
}

Atom* lldpctl_atom_iter_value(Atom* list, void* place) {
    return newAtom(list->connection, (int)(intptr_t)place - 1, 0);
}

void lldpctl_atom_dec_ref(Atom* atom) { free(atom); }
