/* The baseline of the service's benchmark: a Net-SNMP agent that serves the table of the fake extension with
 * Net-SNMP's own table_tdata helper.
 *
 *   table_agent udp:127.0.0.1:PORT COMMUNITY     stand-alone
 *   table_agent --agentx ADDRESS                 subagent
 *
 * Rows and columns come from FAKE_ROWS and FAKE_COLUMNS, as those of the extension. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <net-snmp/net-snmp-config.h> /* before all others */

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <net-snmp/agent/mib_modules.h>

static const oid table_oid[] = {1, 3, 6, 1, 4, 1, 88417, 2, 49, 2};
static volatile sig_atomic_t running = 1;

struct row {
    long number;
    long values[64];
    char texts[64][32];
};

static void stop(int signal)
{
    (void)signal;
    running = 0;
}

static unsigned setting(const char * name, unsigned otherwise)
{
    const char * value = getenv(name);
    return value != NULL ? (unsigned)strtoul(value, NULL, 10) : otherwise;
}

static int handle_table(netsnmp_mib_handler * handler, netsnmp_handler_registration * registration,
                        netsnmp_agent_request_info * info, netsnmp_request_info * requests)
{
    (void)handler;
    (void)registration;
    if (info->mode != MODE_GET) return SNMP_ERR_NOERROR;
    for (netsnmp_request_info * request = requests; request != NULL; request = request->next) {
        struct row * row = (struct row *)netsnmp_tdata_extract_entry(request);
        netsnmp_table_request_info * table = netsnmp_extract_table_info(request);
        if (row == NULL || table == NULL) {
            netsnmp_set_request_error(info, request, SNMP_NOSUCHINSTANCE);
            continue;
        }
        if (table->colnum % 2 == 1)
            snmp_set_var_typed_integer(request->requestvb, ASN_INTEGER, row->values[table->colnum]);
        else
            snmp_set_var_typed_value(request->requestvb, ASN_OCTET_STR, row->texts[table->colnum],
                                     strlen(row->texts[table->colnum]));
    }
    return SNMP_ERR_NOERROR;
}

static void fill(netsnmp_tdata * table, unsigned rows, unsigned columns)
{
    for (unsigned r = 1; r <= rows; ++r) {
        struct row * data = calloc(1, sizeof *data);
        data->number = (long)r;
        for (unsigned c = 1; c <= columns && c < 64; ++c) {
            data->values[c] = (long)(c * 1000 + r);
            snprintf(data->texts[c], sizeof data->texts[c], "cell %02u/%04u", c, r);
        }
        netsnmp_tdata_row * row = netsnmp_tdata_create_row();
        row->data = data;
        netsnmp_tdata_row_add_index(row, ASN_INTEGER, &data->number, sizeof data->number);
        netsnmp_tdata_add_row(table, row);
    }
}

static void serve_table(unsigned rows, unsigned columns)
{
    netsnmp_handler_registration * registration =
        netsnmp_create_handler_registration("table", handle_table, table_oid, OID_LENGTH(table_oid), HANDLER_CAN_RONLY);
    netsnmp_table_registration_info * info = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    netsnmp_tdata * table = netsnmp_tdata_create_table("table", 0);
    netsnmp_table_helper_add_indexes(info, ASN_INTEGER, 0);
    info->min_column = 1;
    info->max_column = columns;
    fill(table, rows, columns);
    netsnmp_tdata_register(registration, table, info);
}

int main(int argc, char ** argv)
{
    const int subagent = argc == 3 && strcmp(argv[1], "--agentx") == 0;
    if (argc != 3) {
        fprintf(stderr, "usage: table_agent ADDRESS COMMUNITY | --agentx ADDRESS\n");
        return 2;
    }
    signal(SIGTERM, stop);
    signal(SIGINT, stop);
    setenv("MIBS", "", 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, "/dev/null");
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_ROOT_ACCESS, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, subagent);
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, subagent ? NETSNMP_DS_AGENT_X_SOCKET : NETSNMP_DS_AGENT_PORTS,
                          subagent ? argv[2] : argv[1]);
    snmp_enable_stderrlog();
    char modules[] = "system_mib,sysORTable,snmp_mib,vacm_conf,vacm_vars,usmConf";
    add_to_init_list(modules);
    init_agent("table_agent");
    if (!subagent) {
        init_mib_modules();
        char line[256];
        snprintf(line, sizeof line, "rocommunity \"%s\" 127.0.0.0/8", argv[2]);
        netsnmp_config_remember(line);
    }
    serve_table(setting("FAKE_ROWS", 10), setting("FAKE_COLUMNS", 31));
    init_snmp("table_agent");
    if (init_master_agent() != 0) return 1;
    fprintf(stderr, "ready\n");
    while (running)
        agent_check_and_process(1);
    return 0;
}
