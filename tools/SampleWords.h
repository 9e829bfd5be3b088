#pragma once

/// What the invented rows are made of. Persons and firms come from putting parts together, so that
/// none is anybody's; banks bear the names of birds, trees and winds.
namespace words {

inline constexpr const char* kWomen[] = {
    "Ana",     "Antônia", "Beatriz",  "Cecília",   "Célia", "Conceição", "Débora",  "Eloá",
    "Fátima",  "Glória",  "Helena",   "Inês",      "Joana", "Lívia",     "Luzia",   "Márcia",
    "Natália", "Olívia",  "Patrícia", "Rosângela", "Sônia", "Tânia",     "Vitória", "Zélia",
};
inline constexpr const char* kMen[] = {
    "Aílton", "Antônio", "Benedito", "Cássio", "César",   "Cláudio", "Édson", "Fábio",
    "Flávio", "Geraldo", "Hélio",    "Inácio", "João",    "José",    "Júlio", "Lúcio",
    "Márcio", "Nélson",  "Otávio",   "Paulo",  "Rogério", "Sérgio",  "Tomás", "Vinícius",
};
inline constexpr const char* kFamilies[] = {
    "Abrantes",  "Araújo",    "Assunção", "Barcelos",  "Brandão",  "Camargo",
    "Conceição", "Damião",    "Esteves",  "Falcão",    "Figueiró", "Galvão",
    "Guimarães", "Junqueira", "Leitão",   "Magalhães", "Moraes",   "Noronha",
    "Peçanha",   "Quintão",   "Ribeiro",  "Simões",    "Teixeira", "Vilaça",
};
inline constexpr const char* kJoins[] = {"", "da ", "de ", "dos "};

inline constexpr const char* kStreets[] = {
    "Rua das Acácias",    "Rua dos Ipês",      "Avenida do Contorno", "Rua São Bento",
    "Travessa da Matriz", "Rua das Paineiras", "Avenida Beira-Rio",   "Rua do Comércio",
    "Alameda dos Sabiás", "Rua da Estação",    "Praça da Igreja",     "Rua das Três Marias",
    "Estrada do Açude",   "Rua João-de-Barro", "Rua Vista Alegre",    "Avenida das Palmeiras",
};
inline constexpr const char* kDistricts[] = {
    "Centro",      "Vila Nova",  "Jardim América", "Boa Vista",     "São José",
    "Santa Luzia", "Bela Vista", "Alto da Serra",  "Vila Operária", "Conceição",
};
struct City {
    const char* name;
    const char* state;
    int firstPostalCode; ///< the five digits before the dash
};
inline constexpr City kCities[] = {
    {"São Paulo",      "SP", 1000 },
    {"Ribeirão Preto", "SP", 14000},
    {"Niterói",        "RJ", 24000},
    {"Vitória",        "ES", 29000},
    {"Uberlândia",     "MG", 38400},
    {"Ilhéus",         "BA", 45650},
    {"Maceió",         "AL", 57000},
    {"João Pessoa",    "PB", 58000},
    {"Goiânia",        "GO", 74000},
    {"Foz do Iguaçu",  "PR", 85850},
    {"Florianópolis",  "SC", 88000},
    {"São Leopoldo",   "RS", 93000},
};

inline constexpr const char* kBanks[] = {
    "Banco Sabiá",     "Banco Aroeira",         "Banco do Minuano",
    "Banco Jacarandá", "Caixa Rural Tico-Tico", "Banco Curió",
    "Banco Peroba",    "Banco Bem-Te-Vi",       "Crédito Quaresmeira",
    "Banco Andorinha", "Banco da Brisa",        "Banco Canário & Irmãos",
    "Banco Ipê-Roxo",  "Banco João-Grande",     "União de Crédito Gaivota",
    "Banco Jequitibá",
};

inline constexpr const char* kTrades[] = {
    "Agricultor", "Balconista", "Cabeleireira", "Eletricista",           "Enfermeira", "Mecânico",
    "Motorista",  "Pedreiro",   "Professora",   "Técnico em eletrônica", "Vendedora",  "Açougueiro",
};
inline constexpr const char* kFirmKinds[] = {
    "Padaria", "Mercearia", "Oficina",     "Confecções",
    "Móveis",  "Papelaria", "Transportes", "Ferragens",
};
inline constexpr const char* kFirmNames[] = {
    "Beija-Flor",    "Três Irmãos", "Estrela-d'Alva", "Pôr do Sol",
    "Nossa Esquina", "Ponto Certo", "Água Clara",     "Boa Sorte",
};

inline constexpr const char* kClientRemarks[] = {
    "Bom pagador.",
    "Só aceitar cheque próprio.",
    "Ligar antes de depositar; o cliente costuma trocar o cheque na loja.",
    "Indicação de outro cliente. Conferir a assinatura com a ficha.",
    "Mudou de endereço: confirmar o novo.\r\nTelefone só à noite.",
};
inline constexpr const char* kChequeRemarks[] = {
    "Cheque de terceiro.",
    "Vem trocar na loja.",
    "2ª parcela",
    "Ligar na véspera.",
    "Pagamento à vista não combinado; prazo dado pelo gerente.",
};
inline constexpr const char* kBouncedRemarks[] = {
    "Sem fundos, 1ª apresentação.", "Sem fundos, 2ª apresentação.",     "Conta encerrada.",
    "Assinatura não confere.",      "Prometeu pagar até o fim do mês.",
};

} // namespace words
