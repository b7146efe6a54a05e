<?xml version="1.0" encoding="UTF-8"?>
<!-- Turns the export document into the marked-up XML that fills the export template: one sheet each for
     budgets, lines and relations, and the properties of the workbook. The import reads the same sheets. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="xml" encoding="UTF-8" indent="no"/>

  <xsl:template match="/Budgets">
    <Workbook>
      <Property B2BPROPLABEL="B2B-DOCTYPE-ID" B2BPROPVALUE="BUDGETS"/>
      <Original B2BORIGINALFILENAME="Budgets_Export.XLT"/>
      <Page B2BWORKSHEET="Budgets">
        <Block B2BBLOCK="A2">
          <c B2BVALUEPOS="A2"/>
          <t B2BVALUEPOS="B2"/>
          <k B2BVALUEPOS="C2"/>
          <o B2BVALUEPOS="D2"/>
          <g B2BVALUEPOS="E2"/>
          <h B2BVALUEPOS="F2"/>
          <a B2BVALUEPOS="G2"/>
          <w B2BVALUEPOS="H2" B2BVALUETYPE="number"/>
          <xsl:apply-templates select="Budget/BudgetHeader"/>
        </Block>
      </Page>
      <Page B2BWORKSHEET="Lines">
        <Block B2BBLOCK="A2">
          <c B2BVALUEPOS="A2"/>
          <s B2BVALUEPOS="B2" B2BVALUETYPE="date"/>
          <e B2BVALUEPOS="C2" B2BVALUETYPE="date"/>
          <b B2BVALUEPOS="D2" B2BVALUETYPE="number"/>
          <n B2BVALUEPOS="E2" B2BVALUETYPE="number"/>
          <p B2BVALUEPOS="F2" B2BVALUETYPE="number"/>
          <t B2BVALUEPOS="G2" B2BVALUETYPE="number"/>
          <r B2BVALUEPOS="H2" B2BVALUETYPE="number"/>
          <d B2BVALUEPOS="I2" B2BVALUETYPE="number"/>
          <v B2BVALUEPOS="J2" B2BVALUETYPE="number"/>
          <xsl:apply-templates select="Budget/BudgetLines/BudgetLine"/>
        </Block>
      </Page>
      <Page B2BWORKSHEET="Relations">
        <Block B2BBLOCK="A2">
          <p B2BVALUEPOS="A2"/>
          <c B2BVALUEPOS="B2"/>
          <t B2BVALUEPOS="C2"/>
          <xsl:apply-templates select="Budget/ChildBudgets/ChildBudget"/>
        </Block>
      </Page>
    </Workbook>
  </xsl:template>

  <xsl:template match="BudgetHeader">
    <x>
      <c><xsl:value-of select="BudgetCode"/></c>
      <t><xsl:value-of select="BudgetType"/></t>
      <k><xsl:value-of select="Currency"/></k>
      <o><xsl:value-of select="AdministrativeOffice"/></o>
      <g><xsl:value-of select="ChargeType"/></g>
      <h><xsl:value-of select="BudgetHolder"/></h>
      <a><xsl:value-of select="ApprovalReqd"/></a>
      <w><xsl:value-of select="WarnMultiples"/></w>
    </x>
  </xsl:template>

  <xsl:template match="BudgetLine">
    <x>
      <c><xsl:value-of select="../../BudgetHeader/BudgetCode"/></c>
      <s><xsl:value-of select="EffectiveDate"/></s>
      <e><xsl:value-of select="ExpiryDate"/></e>
      <b><xsl:value-of select="BudgetAmount"/></b>
      <n><xsl:value-of select="NotApprovedAmount"/></n>
      <p><xsl:value-of select="ApprovedAmount"/></p>
      <t><xsl:value-of select="SentAmount"/></t>
      <r><xsl:value-of select="ReceivedAmount"/></r>
      <d><xsl:value-of select="ClosedAmount"/></d>
      <v><xsl:value-of select="BalanceAvailable"/></v>
    </x>
  </xsl:template>

  <xsl:template match="ChildBudget">
    <x>
      <p><xsl:value-of select="../../BudgetHeader/BudgetCode"/></p>
      <c><xsl:value-of select="BudgetCode"/></c>
      <t><xsl:value-of select="BudgetType"/></t>
    </x>
  </xsl:template>
</xsl:stylesheet>
