#include "tools/Commands.h"

namespace {

constexpr Option kCreateOptions[] = {
    {"--jet4",   nullptr, "no formato Jet 4, de 2000 a 2003 (é o que se faz sem opção)"   },
    {"--jet3",   nullptr, "no formato Jet 3, de 97"                                          },
    {"--owner",  "PAPEL", "num servidor: de quem são as tabelas (valtrino_dono)"            },
    {"--clerks", "PAPEL", "num servidor: quem trabalha com os registros (valtrino_atendente)"},
};

constexpr Option kSampleOptions[] = {
    {"--clients", "N",          "clientes e fornecedores (200)"                                 },
    {"--banks",   "N",          "bancos (12)"                                                   },
    {"--cheques", "N",          "cheques recebidos (1000)"                                      },
    {"--bounced", "N",          "cheques sem fundos (50)"                                       },
    {"--seed",    "N",          "semente do sorteio: a mesma dá os mesmos dados (1)"           },
    {"--today",   "AAAA-MM-DD", "o dia a que as datas se referem (hoje)"                        },
    {"--jet4",    nullptr,      "no formato Jet 4, de 2000 a 2003 (é o que se faz sem opção)"},
    {"--jet3",    nullptr,      "no formato Jet 3, de 97"                                       },
};

constexpr Option kDumpOptions[] = {
    {"--csv",  nullptr, "em CSV (RFC 4180), e não em colunas alinhadas"                   },
    {"--json", nullptr, "em JSON: uma lista com um objeto para cada registro, um por linha"},
};

constexpr Option kTablesOptions[] = {
    {"--json", nullptr, "em JSON: tabela, registros, campos, so_para_consulta (o motivo, ou null)"},
};

constexpr Option kCheckOptions[] = {
    {"--json", nullptr, "em JSON: conclusao, regras_conferidas, as contagens e os achados"},
};

constexpr Option kImportOptions[] = {
    {"--skip", nullptr, "grava os registros aceitos, ainda que outros sejam recusados"},
};

constexpr ToolCommand kCreate{
    "create",
    "ARQUIVO",
    "Cria um banco de dados vazio",
    "Faz um arquivo novo com as quatro tabelas da loja (cliente_fornecedor, bancos, cheques,\n"
    "semfundos), sem registros. Um arquivo que já existe não é tocado.\n"
    "No lugar do arquivo pode estar o endereço de uma base de dados vazia de um servidor\n"
    "PostgreSQL, postgresql://servidor/base: as tabelas são feitas nela, e a do histórico, com\n"
    "dois papéis do servidor, o dono e os atendentes, que não mudam tabelas. A senha não vai no\n"
    "endereço, e sim em ~/.pgpass.",
    kCreateOptions,
    runCreate};

constexpr ToolCommand kMigrate{
    "migrate",
    "ORIGEM DESTINO",
    "Leva um banco de dados de um arquivo para um servidor, ou de volta",
    "De um arquivo para a base de dados vazia de um servidor PostgreSQL, "
    "postgresql://servidor/base:\n"
    "tabelas, registros, índices, relacionamentos e regras. De um servidor para um arquivo novo:\n"
    "tabelas, registros e índices. O que se gravou é lido de volta por outro caminho e comparado\n"
    "registro por registro, com contagens e somas; se há uma diferença, ou se o comando é\n"
    "interrompido, no destino não fica nada. A origem não é mudada; feche o programa antes.\n"
    "A senha não vai no endereço, e sim em ~/.pgpass.\n"
    "Saída 0: tudo igual; 1: nada foi feito; 3: tudo igual, mas uma regra ou um índice ficou "
    "diferente.",
    kCreateOptions,
    runMigrate};

constexpr ToolCommand kSample{
    "sample",
    "ARQUIVO",
    "Cria um banco de dados com registros inventados",
    "Faz um arquivo novo, como \"create\", e o enche de registros para ensaio e treinamento.\n"
    "Nomes, documentos, bancos e endereços são todos inventados: os dígitos de controle de cada\n"
    "CPF e CNPJ são errados de propósito, para que não sejam os de ninguém. Os mesmos números,\n"
    "semente e data dão sempre os mesmos registros.",
    kSampleOptions,
    runSample};

constexpr ToolCommand kCheck{
    "check",
    "ARQUIVO",
    "Verifica um banco de dados inteiro, e as regras dele",
    "Lê todas as páginas, tabelas, registros e índices e diz o que está errado e onde, sem mudar\n"
    "nada. Pode ser usado com o programa aberto, mas um registro gravado durante a verificação\n"
    "pode aparecer como erro: nesse caso, repita. Avisos são sobras sem perigo.\n"
    "Num arquivo sem erros diz também que registros não obedecem às regras guardadas nele: campos\n"
    "que devem ser preenchidos, regras de validação, relacionamentos. Não é dano: um registro "
    "pode\n"
    "ser mais antigo do que a regra. De cada regra são ditos 50 registros, e quantos mais há.\n"
    "No lugar do arquivo pode estar o endereço de um servidor, postgresql://servidor/base: então\n"
    "são conferidos tabelas, índices, numerações, direitos, regras e registros sem cliente ou "
    "banco.\n"
    "Saída 0: nada a relatar; 1: há erros; 3: só avisos, ou registros fora das regras.",
    kCheckOptions,
    runCheck};

constexpr ToolCommand kDump{
    "dump",
    "ARQUIVO TABELA",
    "Mostra os registros de uma tabela",
    "Sem opção, em colunas alinhadas, com os textos longos cortados; com --csv, inteiros.\n"
    "Na primeira linha vêm os nomes dos campos. Datas: AAAA-MM-DD, e a hora (Thh:mm:ss) só se\n"
    "houver; valores: com ponto e quatro decimais; sim/não: 1/0; bytes: em hexadecimal.\n"
    "No CSV (UTF-8, linhas terminadas em CR LF) o campo nulo fica vazio e o texto vazio é \"\".\n"
    "Numa tabela de um só campo a linha vazia é, pois, um registro em que ele é nulo.\n"
    "No JSON, o campo nulo é null, sim/não é true/false, números inteiros são números e todo o\n"
    "resto são textos, como acima.",
    kDumpOptions,
    runDump};

constexpr ToolCommand kInfo{
    "info",
    "ARQUIVO",
    "Diz o que é um banco de dados, e quem o tem aberto",
    "O formato, o tamanho, quantas tabelas e registros, as estações e os outros programas que o\n"
    "têm aberto agora, a última cópia de segurança e os danos que o programa anotou.",
    {},
    runInfo};

constexpr ToolCommand kExport{
    "export",
    "ARQUIVO PASTA",
    "Grava cada tabela num arquivo CSV",
    "Na pasta, que já existe, um arquivo para cada tabela: o nome dela, com \".csv\". O CSV é o "
    "de\n"
    "\"dump --csv\". Nenhum arquivo é substituído: se um já existe, nada é gravado.",
    {},
    runExport};

constexpr ToolCommand kImport{
    "import",
    "ARQUIVO TABELA CSV",
    "Acrescenta a uma tabela os registros de um arquivo CSV",
    "O CSV é como o de \"dump --csv\": UTF-8, vírgulas, na primeira linha os nomes dos campos "
    "(nem\n"
    "todos, e em qualquer ordem; os outros ficam como num registro novo). Cada registro é "
    "conferido\n"
    "com os tipos e as regras do arquivo. De cada recusado é dita a linha e o motivo, e então "
    "nada\n"
    "é gravado. Pode ser usado com o programa aberto; as outras estações esperam para gravar.\n"
    "Saída 0: todos foram gravados; 1: nenhum foi; 3: com --skip, alguns foram recusados.",
    kImportOptions,
    runImport};

constexpr ToolCommand kTables{
    "tables",
    "ARQUIVO",
    "Lista as tabelas de um banco de dados",
    "De cada tabela: o nome, o número de registros e de campos, e por que ela só pode ser\n"
    "consultada, se for o caso.",
    kTablesOptions,
    runTables};

constexpr ToolCommand kCompact{
    "compact",
    "ORIGEM DESTINO",
    "Copia um banco de dados sem o espaço que ninguém usa",
    "Faz um arquivo novo com tudo o que há no de origem, índices refeitos, e o compara com ele\n"
    "registro por registro. O de origem não é tocado e não pode ser alterado durante a cópia:\n"
    "feche o programa antes. Um arquivo com erros não é compactado: para ele há \"salvage\".",
    {},
    runCompact};

constexpr ToolCommand kSalvage{
    "salvage",
    "ORIGEM DESTINO",
    "Salva o que se lê de um banco de dados danificado",
    "Faz um arquivo novo com todos os registros que ainda podem ser lidos e diz o que falta: a\n"
    "tabela, a página, a linha e o motivo. Registros que repetem uma chave ficam numa tabela à\n"
    "parte, de nome terminado em \"_separados\". Uma gravação interrompida, se o registro que a\n"
    "desfaz está ao lado do arquivo, é desfeita primeiro, numa cópia. O de origem não é tocado.\n"
    "Saída 0: tudo foi salvo; 1: falta alguma coisa.",
    {},
    runSalvage};

constexpr ToolCommand kRestore{
    "restore",
    "CÓPIA ARQUIVO",
    "Põe uma cópia de segurança no lugar do banco de dados",
    "Verifica a cópia inteira e a põe no lugar do arquivo, de uma só vez. O arquivo substituído\n"
    "fica ao lado, com a data e a hora no nome. Com o programa aberto, nada é feito.",
    {},
    runRestore};

constexpr ToolCommand kMove{
    "move",
    "ARQUIVO PASTA",
    "Muda um banco de dados de pasta, com as cópias de segurança dele",
    "Nada é substituído: se na outra pasta já há um banco de dados com esse nome, nada é feito.\n"
    "Com o programa aberto também não.",
    {},
    runMove};

constexpr ToolCommand kUpgrade{
    "upgrade",
    "ARQUIVO",
    "Dá a um banco de dados de antes o que esta versão pede",
    "Acrescenta as tabelas, os campos e os índices da loja que faltam no arquivo, e nada muda ou\n"
    "tira. Nos registros que já existem os campos novos ficam vazios; os de sim ou não ficam com\n"
    "sim, como nos que o programa lança. O trabalho é feito numa cópia, que é conferida inteira e\n"
    "toma o lugar do arquivo de uma só vez; o arquivo como era fica ao lado, com a data e a hora\n"
    "no nome. Com o programa aberto, nada é feito.\n"
    "Num servidor, ARQUIVO é o endereço: ele recebe os índices que lhe faltam, e ninguém grava\n"
    "enquanto são feitos.",
    {},
    runUpgrade};

constexpr Option kHistoryOptions[] = {
    {"--off",    nullptr, "deixa de gravar o histórico nesse arquivo; o que há fica"},
    {"--on",     nullptr, "volta a gravá-lo"                                         },
    {"--remove", nullptr, "tira do arquivo o que foi gravado até agora, para sempre" },
};

constexpr ToolCommand kHistory{
    "history",
    "ARQUIVO",
    "Diz se o histórico dos cheques é gravado, liga, desliga ou o tira",
    "O programa grava num banco de dados o que se fez com os cheques, na tabela\n"
    "\"valtrino_historico\". Sem opção, diz se ela existe, quantos registros tem e se é gravada.\n"
    "Desligado, o arquivo tem a tabela \"valtrino_sem_historico\". Pode ser usado com o programa\n"
    "aberto; o que se tira não pode mais ser desfeito nas estações.",
    kHistoryOptions,
    runHistory};

constexpr ToolCommand kCommands[] = {kCreate,  kSample, kInfo,    kCheck,   kTables,
                                     kDump,    kExport, kImport,  kCompact, kSalvage,
                                     kRestore, kMove,   kUpgrade, kHistory, kMigrate};

} // namespace

std::span<const ToolCommand> commands() { return kCommands; }
