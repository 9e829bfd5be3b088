; The installer, made by packaging/windows/build, which says what there is to install:
;   VERSION, STAGE (the folder of the files), FILES and REMOVED (what puts them there and takes them
;   away), KILOBYTES, OUTPUT, and SIGN if there is a command that signs.
;
; Silent: /S, with /CurrentUser or /AllUsers, and /D=<folder> as the last word.
Target amd64-unicode
SetCompressor /SOLID lzma
Name "Valtrino"
OutFile "${OUTPUT}"
BrandingText "Valtrino ${VERSION}"

; For oneself without asking anybody; for all by who may.
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_INSTDIR "Valtrino"
!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Valtrino"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!include MultiUser.nsh
!include MUI2.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!insertmacro MUI_PAGE_LICENSE "${STAGE}\licencas\valtrino.txt"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\valtrino-novo.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Escolher agora a pasta do banco de dados"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "PortugueseBR"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "ProductName" "Valtrino"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "FileDescription" "Instalador do Valtrino"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "CompanyName" "Valtrino"
VIAddVersionKey /LANG=${LANG_PORTUGUESEBR} "LegalCopyright" "Licença MIT"
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"'
!endif

; Ends if a program of the folder is open: Windows keeps its files from being replaced or taken away.
!macro END_IF_OPEN
  ${If} ${FileExists} "$INSTDIR\valtrino.exe"
    ClearErrors
    FileOpen $0 "$INSTDIR\valtrino.exe" a
    ${If} ${Errors}
      MessageBox MB_OK|MB_ICONEXCLAMATION "O Valtrino está aberto neste computador. Feche-o e tente de novo." /SD IDOK
      SetErrorLevel 2
      Quit
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

Function .onInit
  SetRegView 64
  !insertmacro MULTIUSER_INIT
FunctionEnd

Function un.onInit
  SetRegView 64
  !insertmacro MULTIUSER_UNINIT
FunctionEnd

Section
  !insertmacro END_IF_OPEN
  ; What an earlier version had goes first: the files of the shop stay.
  ${If} ${FileExists} "$INSTDIR\remover.exe"
    ExecWait '"$INSTDIR\remover.exe" /S /$MultiUser.InstallMode _?=$INSTDIR'
  ${EndIf}
  !include "${FILES}"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\remover.exe"
  CreateDirectory "$SMPROGRAMS\Valtrino"
  CreateShortcut "$SMPROGRAMS\Valtrino\Valtrino.lnk" "$INSTDIR\valtrino.exe"
  CreateShortcut "$SMPROGRAMS\Valtrino\Valtrino (novo banco de dados).lnk" "$INSTDIR\valtrino-novo.exe"
  CreateShortcut "$SMPROGRAMS\Valtrino\Manual do Valtrino.lnk" "$INSTDIR\manual\index.html"
  WriteRegStr SHCTX "${KEY}" "DisplayName" "Valtrino"
  WriteRegStr SHCTX "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${KEY}" "DisplayIcon" "$INSTDIR\valtrino.exe"
  WriteRegStr SHCTX "${KEY}" "Publisher" "Valtrino"
  WriteRegStr SHCTX "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${KEY}" "UninstallString" '"$INSTDIR\remover.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${KEY}" "QuietUninstallString" '"$INSTDIR\remover.exe" /S /$MultiUser.InstallMode'
  WriteRegDWORD SHCTX "${KEY}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD SHCTX "${KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${KEY}" "NoRepair" 1
SectionEnd

; What was installed, by name, and nothing else: a database or init.ini beside the program stays.
Section "Uninstall"
  !insertmacro END_IF_OPEN
  Delete "$SMPROGRAMS\Valtrino\Valtrino.lnk"
  Delete "$SMPROGRAMS\Valtrino\Valtrino (novo banco de dados).lnk"
  Delete "$SMPROGRAMS\Valtrino\Manual do Valtrino.lnk"
  RMDir "$SMPROGRAMS\Valtrino"
  !include "${REMOVED}"
  Delete "$INSTDIR\remover.exe"
  RMDir "$INSTDIR"
  DeleteRegKey SHCTX "${KEY}"
SectionEnd
