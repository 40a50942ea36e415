/* The manager of the service's benchmark: walks a subtree over and over and tells how many variables a second it
 * got. One request at a time, as managers do.
 *
 *   walk_client ADDRESS COMMUNITY OID REPETITIONS SECONDS
 *
 * REPETITIONS 0 walks by GETNEXT, more by GETBULK. Prints "VARIABLES_PER_SECOND VARIABLES_OF_ONE_WALK". */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

static double now(void)
{
    struct timespec time;
    timespec_get(&time, TIME_UTC);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

struct walk {
    void * session;
    long repetitions;
    oid root[MAX_OID_LEN];
    size_t root_length;
    oid at[MAX_OID_LEN];
    size_t at_length;
    long variables;
};

static int take(struct walk * walk, netsnmp_variable_list * variable)
{
    if (variable->name_length < walk->root_length ||
        memcmp(variable->name, walk->root, walk->root_length * sizeof(oid)) != 0 || variable->type == SNMP_ENDOFMIBVIEW)
        return 0;
    memcpy(walk->at, variable->name, variable->name_length * sizeof(oid));
    walk->at_length = variable->name_length;
    ++walk->variables;
    return 1;
}

/* One request. 1: go on, 0: the walk has reached its end, -1: no answer. */
static int step(struct walk * walk)
{
    netsnmp_pdu * pdu = snmp_pdu_create(walk->repetitions != 0 ? SNMP_MSG_GETBULK : SNMP_MSG_GETNEXT);
    if (walk->repetitions != 0) {
        pdu->non_repeaters = 0;
        pdu->max_repetitions = walk->repetitions;
    }
    snmp_add_null_var(pdu, walk->at, walk->at_length);
    netsnmp_pdu * answer = NULL;
    if (snmp_sess_synch_response(walk->session, pdu, &answer) != STAT_SUCCESS || answer == NULL) return -1;
    int more = answer->errstat == SNMP_ERR_NOERROR;
    for (netsnmp_variable_list * variable = answer->variables; more && variable != NULL;
         variable = variable->next_variable)
        more = take(walk, variable);
    snmp_free_pdu(answer);
    return more;
}

static int walk_once(struct walk * walk)
{
    int more = 1;
    memcpy(walk->at, walk->root, sizeof walk->root);
    walk->at_length = walk->root_length;
    walk->variables = 0;
    while (more == 1)
        more = step(walk);
    return more;
}

int main(int argc, char ** argv)
{
    if (argc != 6) {
        fprintf(stderr, "usage: walk_client ADDRESS COMMUNITY OID REPETITIONS SECONDS\n");
        return 2;
    }
    struct walk walk;
    memset(&walk, 0, sizeof walk);
    setenv("MIBS", "", 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, "/dev/null");
    init_snmp("walk_client");
    netsnmp_session settings;
    snmp_sess_init(&settings);
    settings.version = SNMP_VERSION_2c;
    settings.peername = argv[1];
    settings.community = (u_char *)argv[2];
    settings.community_len = strlen(argv[2]);
    walk.session = snmp_sess_open(&settings);
    walk.root_length = MAX_OID_LEN;
    if (walk.session == NULL || !read_objid(argv[3], walk.root, &walk.root_length)) return 1;
    walk.repetitions = strtol(argv[4], NULL, 10);
    const double length = strtod(argv[5], NULL);

    const double start = now();
    long total = 0;
    double end = start;
    do {
        if (walk_once(&walk) < 0) {
            fprintf(stderr, "no answer\n");
            return 1;
        }
        total += walk.variables;
        end = now();
    } while (end - start < length);
    printf("%.0f %ld\n", (double)total / (end - start), walk.variables);
    snmp_sess_close(walk.session);
    return 0;
}
