@echo off
rem Instala os simuladores em C:\Lumetra, C:\Tef_Dial e C:\Trevix, depois de perguntar.
rem     instalar_simuladores             instala, ou põe esta versão no lugar da que está lá
rem     instalar_simuladores /remover    retira o que instalou e o que os simuladores gravaram
rem
rem O que este instalador fez está em um registro em cada pasta, uma linha "arquivo tamanho" por
rem programa. Um programa de outro tamanho, ou uma pasta sem registro, é de outro: fica como está.
setlocal EnableExtensions DisableDelayedExpansion
set "registro=simuladores_da_caixora.txt"
for /f "tokens=2 delims=:." %%p in ('chcp') do set "pagina=%%p"
chcp 1252 >nul
set "acao=:uso"
if "%~1"=="" set "acao=:instalar"
if /i "%~1"=="/remover" set "acao=:remover"
set "falha="
call %acao%
set "codigo=0"
if defined falha set "codigo=1"
rem Quem o abre com dois cliques ainda quer ler o que ele disse.
if "%acao%"==":instalar" pause
chcp %pagina% >nul
exit /b %codigo%

:uso
echo Uso: instalar_simuladores [/remover]
set "falha=1"
goto :eof

:instalar
for %%a in (clientorvane_simulador.exe Trevix.exe Email.exe) do call :confere_pacote %%a
for %%u in (C D E F) do call :confere_unidade %%u
if exist C:\OrvaneAutomacao.txt call :recusa A marca C:\OrvaneAutomacao.txt troca o GP por outro.
for %%p in (Lumetra Tef_Dial Trevix) do call :confere_pasta %%p
call :confere_programa Lumetra clientorvane_simulador.exe
call :confere_programa Tef_Dial Tef_Dial.exe
call :confere_programa Trevix Trevix.exe
call :confere_programa Trevix Email.exe
if defined falha goto :nada_mudou

echo Serão instalados, só para desenvolvimento e testes:
echo     C:\Lumetra     o GP simulado
echo     C:\Tef_Dial    a pasta de troca
echo     C:\Trevix      o companheiro e o envio simulados
set "resposta="
set /p "resposta=Instalar? (S/N) "
echo.
if not defined resposta goto :nada_mudou
set "resposta=%resposta:"=%"
if /i not "%resposta:~0,1%"=="S" goto :nada_mudou

set "sem_log=1"
if exist C:\TrevixLog set "sem_log="
for %%p in (Lumetra Tef_Dial Trevix) do call :faz_pasta %%p
if defined falha goto :nao_instalou
for %%p in (Tef_Dial\Req Tef_Dial\Resp) do if not exist C:\%%p mkdir C:\%%p
if not exist C:\Tef_Dial\Resp goto :nao_instalou
echo Tef_Dial.exe 0 >>C:\Tef_Dial\%registro%
if not exist C:\Tef_Dial\Tef_Dial.exe type nul >C:\Tef_Dial\Tef_Dial.exe
if not exist C:\Tef_Dial\Tef_Dial.exe goto :nao_instalou
if defined sem_log echo TrevixLog pasta >>C:\Trevix\%registro%
call :copia Lumetra clientorvane_simulador.exe
call :copia Trevix Trevix.exe
call :copia Trevix Email.exe
if defined falha goto :nao_instalou
echo Instalados. Para retirar: instalar_simuladores /remover
goto :eof

:nada_mudou
echo Nada foi mudado.
set "falha=1"
goto :eof

:nao_instalou
echo Não foi possível instalar. Feche os simuladores e veja se este usuário pode gravar em C:\.
echo Depois repita, ou retire com /remover o que já foi instalado.
set "falha=1"
goto :eof

:recusa
echo %*
set "falha=1"
goto :eof

:confere_pacote
if not exist "%~dp0%1" call :recusa Falta %1 ao lado deste arquivo. Extraia o ZIP inteiro.
goto :eof

rem O GP simulado esconderia um de verdade, e aprova vendas sem que haja dinheiro.
:confere_unidade
for %%g in ("Pavolin TEF\Pavolin.exe" "Orvane Lumetra\clientorvane.exe") do call :confere_gp "%1:\%%~g"
for %%g in ("Nerol TEF\Nerol.exe" "Lumetra\clientorvane.exe") do call :confere_gp "%1:\%%~g"
call :confere_gp "%1:\Orvane Lumetra\clientorvane_simulador.exe"
if "%1"=="C" goto :eof
if exist "%1:\Tef_Dial\Tef_Dial.exe" call :recusa Há outra pasta de troca, %1:\Tef_Dial.
goto :eof

:confere_gp
if exist %1 call :recusa Há outro GP nesta máquina, %1.
goto :eof

:confere_pasta
if not exist C:\%1 goto :eof
if not exist C:\%1\%registro% call :recusa C:\%1 já existe, e não foi feita por este instalador.
goto :eof

rem O programa não existe, ou é do tamanho de um que este instalador copiou.
:confere_programa
if not exist C:\%1\%2 goto :eof
if not exist C:\%1\%registro% goto :eof
set "tamanho="
for %%f in (C:\%1\%2) do set "tamanho=%%~zf"
set "proprio="
for /f "usebackq tokens=1,2" %%a in ("C:\%1\%registro%") do if "%%a %%b"=="%2 %tamanho%" set "proprio=1"
if not defined proprio call :recusa C:\%1\%2 não é o que este instalador pôs lá.
goto :eof

:faz_pasta
if exist C:\%1\%registro% goto :eof
mkdir C:\%1
echo Feito por instalar_simuladores >C:\%1\%registro%
if not exist C:\%1\%registro% set "falha=1"
goto :eof

rem O tamanho entra no registro antes: uma queda não deixa um programa sem ele.
:copia
for %%f in ("%~dp0%2") do echo %2 %%~zf >>C:\%1\%registro%
copy /y "%~dp0%2" C:\%1\%2 >nul
if errorlevel 1 set "falha=1"
goto :eof

:remover
for %%p in (Lumetra Tef_Dial Trevix) do call :diz_se_fica %%p
call :confere_programa Lumetra clientorvane_simulador.exe
call :confere_programa Tef_Dial Tef_Dial.exe
call :confere_programa Trevix Trevix.exe
call :confere_programa Trevix Email.exe
if defined falha goto :nada_mudou
if exist C:\Lumetra\%registro% taskkill /f /im clientorvane_simulador.exe >nul 2>nul
call :apaga_programa Lumetra clientorvane_simulador.exe
call :apaga_programa Trevix Trevix.exe
call :apaga_programa Trevix Email.exe
if defined falha goto :eof
call :desfaz_lumetra
call :desfaz_tef_dial
call :desfaz_trevix
echo Retirados.
goto :eof

:diz_se_fica
if not exist C:\%1 goto :eof
if not exist C:\%1\%registro% echo C:\%1 não foi feita por este instalador: fica como está.
goto :eof

rem Um programa que acaba de ser encerrado leva um instante para soltar o arquivo.
:apaga_programa
if not exist C:\%1\%registro% goto :eof
for /l %%n in (1,1,10) do call :tenta_apagar C:\%1\%2
if exist C:\%1\%2 call :recusa C:\%1\%2 está em uso. Feche-o e repita.
goto :eof

:tenta_apagar
if not exist %1 goto :eof
del /f /q %1 2>nul
if exist %1 ping -n 2 127.0.0.1 >nul
goto :eof

rem Saem só os arquivos que os simuladores e a biblioteca gravam.
:desfaz_lumetra
if not exist C:\Lumetra\%registro% goto :eof
call :apaga C:\Lumetra\Log Caixora.log Caixora_??????????????.log
call :apaga C:\Lumetra Pedidos.txt Livro.txt %registro%
goto :eof

:desfaz_tef_dial
if not exist C:\Tef_Dial\%registro% goto :eof
call :apaga C:\Tef_Dial\Req intpos.001
call :apaga C:\Tef_Dial\Resp Intpos.001 Ativo.001 intpos.tmp
call :apaga C:\Tef_Dial Tef_Dial.exe %registro%
goto :eof

:desfaz_trevix
if not exist C:\Trevix\%registro% goto :eof
set "com_log="
for /f "usebackq tokens=1" %%a in ("C:\Trevix\%registro%") do if "%%a"=="TrevixLog" set "com_log=1"
if defined com_log call :apaga C:\TrevixLog Caixora.log Caixora_??????????????.log
call :apaga C:\Trevix\Req Req001.txt
call :apaga C:\Trevix\Resp Resp001.txt
for %%a in (Req001_Temp.txt Resp001_Temp.txt Email_recebido.txt) do del /f /q C:\Trevix\%%a 2>nul
call :apaga C:\Trevix Trevix_parametros.txt Trevix_fluxos.txt Trevix_cenario.txt %registro%
goto :eof

rem A pasta, os arquivos que saem dela; depois a pasta, se nada mais está nela.
:apaga
set "pasta=%1"
if not exist %pasta% goto :eof
:apaga_o_proximo
shift
if "%1"=="" goto :apaga_a_pasta
del /f /q %pasta%\%1 2>nul
goto :apaga_o_proximo
:apaga_a_pasta
rmdir %pasta% 2>nul
if not exist %pasta% goto :eof
echo Em %pasta% fica o que é de outros:
dir /b %pasta%
goto :eof
