#include "shell/Documento.h"

#include "support/FormTest.h"

namespace {

class DocumentNumber : public FormTest {
protected:
    void expectWrongLength() { expectMessage("Mensagem", "CGC/CPF Inválido !", MessageIcon::none); }
};

TEST_F(DocumentNumber, ElevenDigitsAreACpf) {
    EXPECT_EQ(Documento::formatar("12345678901"), "123.456.789-01");
    EXPECT_EQ(Documento::semSinais("123.456.789-01"), "12345678901");
}

TEST_F(DocumentNumber, FourteenDigitsAreACnpj) {
    EXPECT_EQ(Documento::formatar("12345678000195"), "12.345.678/0001-95");
    EXPECT_EQ(Documento::semSinais("12.345.678/0001-95"), "12345678000195");
}

TEST_F(DocumentNumber, NoneOrOneDigitIsNoneWithoutAWord) {
    EXPECT_EQ(Documento::formatar(""), "");
    EXPECT_EQ(Documento::formatar("7"), "");
}

TEST_F(DocumentNumber, AnyOtherLengthIsSaidToBeWrong) {
    for (const qsizetype length : {2, 10, 12, 13, 15, 18, 60}) {
        expectWrongLength();
        EXPECT_EQ(Documento::formatar(QString(length, u'1')), "") << length;
    }
}

TEST_F(DocumentNumber, CheckDigitsAreNotLookedAt) {
    EXPECT_EQ(Documento::formatar("11111111111"), "111.111.111-11");
    EXPECT_EQ(Documento::formatar("00000000000000"), "00.000.000/0000-00");
}

TEST_F(DocumentNumber, CharactersGoByPlaceWhateverTheyAre) {
    EXPECT_EQ(Documento::formatar("abcdefghijk"), "abc.def.ghi-jk");
    EXPECT_EQ(Documento::formatar("123.456.789-01"), "12.3.4.56./789--01");
    EXPECT_EQ(Documento::semSinais("abcdefghijklmn"), "abcefgijkmn");
    EXPECT_EQ(Documento::semSinais("abcdefghijklmnopqr"), "abdefhijlmnoqr");
}

TEST_F(DocumentNumber, FourteenBareDigitsLoseThree) {
    EXPECT_EQ(Documento::semSinais("12345678000195"), "12356700095");
}

TEST_F(DocumentNumber, ATextOfAnyOtherLengthStays) {
    for (const QString text : {"", "1", "12345678901", "123.456.789-0", "12.345.678/0001-9"})
        EXPECT_EQ(Documento::semSinais(text), text);
}

} // namespace
